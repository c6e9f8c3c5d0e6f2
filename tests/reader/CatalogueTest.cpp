// The clip catalogue over small in-memory files: which master mobs count, their source
// tracks, and the essence and locator found down their source chain.
#include "InMemoryFile.h"

namespace {

using readertest::Object;

class Catalogue : public testing::Test {
protected:
    // A master mob with a picture slot 1 and a sound slot 2 on file mobs 201 and 202.
    void master(uint32_t id, const std::wstring& name, const aafUID_t* usage = nullptr) {
        Object& m = s.mob(AUID_AAFMasterMob, id, name, usage);
        s.slot(m, 1, s.clip(201, 1, 100, 0, kAAFDataDef_Picture), 1);
        s.slot(m, 2, s.clip(202, 1, 100, 0), 2);
    }
    Object& fileMob(uint32_t id, Object& descriptor) {
        Object& m = s.mob(AUID_AAFSourceMob, id, L"");
        EXPECT_EQ(aafkit::setObject(m, PID_SourceMob_EssenceDescription, descriptor), 0);
        return m;
    }
    Object& soundFile(uint32_t id) {
        Object& sound = aafkit::createObject(s.file(), AUID_AAFWAVEDescriptor);
        aafkit::setBytes(sound, PID_WAVEDescriptor_Summary, {'R', 'I', 'F', 'F'});
        return fileMob(id, sound);
    }
    std::wstring text(AAFRESULT (*load)(uint32_t, wchar_t*, int32_t, AafParseContext*)) {
        wchar_t buffer[100];
        EXPECT_EQ(load(0, buffer, 99, c()), 0);
        return buffer;
    }
    AafParseContext* c() { return s.context(); }

    readertest::InMemorySession s;
};

TEST_F(Catalogue, NamedMasterMobsWithSourceTracksInSlotOrder) {
    master(10, L"lower", &kAAFUsage_LowerLevel);
    master(11, L"plain");
    master(12, L"");  // no name: abandoned with an error line
    EXPECT_EQ(readertest::lines(s.parse()).size(), 1u);
    ASSERT_EQ(GetNumClips(c()), 1u);
    EXPECT_EQ(text(LoadClipName), L"plain");
    EXPECT_EQ(text(LoadClipID), L"{0000000b000000000000000000000000}");
    EXPECT_EQ(GetClipIsVideo(0, 0, c()), 3u);
    EXPECT_EQ(GetClipIsVideo(0, 1, c()), 4u);
    EXPECT_EQ(GetClipIsVideo(0, 2, c()), 0xFFFFFFFFu);
    EXPECT_EQ(LoadClipType(0, c()), 0u) << "no file mob, no essence";
    EXPECT_EQ(text(LoadClipPath), L"");
}

TEST_F(Catalogue, LocatorFoundDownTheSourceChain) {
    master(11, L"clip");
    s.slot(soundFile(202), 1, s.clip(300, 1, 100, 0));
    Object& import = aafkit::createObject(s.file(), AUID_AAFImportDescriptor);
    ASSERT_EQ(aafkit::appendObject(import, PID_EssenceDescriptor_Locator,
                                   aafkit::createNetworkLocator(s.file(), L"file:///tape.wav")),
              0);
    fileMob(300, import);
    s.parse();
    EXPECT_EQ(text(LoadClipPath), L"file:///tape.wav");
    EXPECT_EQ(LoadClipType(0, c()), 2u);
}

TEST_F(Catalogue, SourceChainThatLoopsEnds) {
    master(11, L"clip");
    Object& file = soundFile(202);
    for (uint32_t slot = 1; slot <= 40; ++slot) s.slot(file, slot, s.clip(202, 1, 100, 0));
    s.parse();
    EXPECT_EQ(text(LoadClipPath), L"");
    EXPECT_EQ(LoadClipType(0, c()), 2u);
}

}  // namespace
