// The clip catalogue over small in-memory files: which master mobs count, their source
// tracks, and what their file mobs' descriptors and locators add.
#include "InMemoryFile.h"

namespace {

using readertest::InMemorySession;
using readertest::lines;
using readertest::mobId;
using readertest::Object;

class Catalogue : public testing::Test {
protected:
    // A master mob with a picture slot 1 and a sound slot 2 on file mobs 201 and 202.
    Object& master(uint32_t id, const std::wstring& name, const aafUID_t* usage = nullptr) {
        Object& m = s.mob(AUID_AAFMasterMob, id, name, usage);
        s.slot(m, 1, s.clip(201, 1, 100, 0, kAAFDataDef_Picture), 1);
        s.slot(m, 2, s.clip(202, 1, 100, 0), 2);
        return m;
    }
    Object& fileMob(uint32_t id, Object& descriptor) {
        Object& m = s.mob(AUID_AAFSourceMob, id, L"");
        EXPECT_EQ(aafkit::setObject(m, PID_SourceMob_EssenceDescription, descriptor), 0);
        return m;
    }
    std::wstring path(uint32_t clip) {
        wchar_t text[100];
        EXPECT_EQ(LoadClipPath(clip, text, 99, c()), 0);
        return text;
    }
    AafParseContext* c() { return s.context(); }

    InMemorySession s;
};

TEST_F(Catalogue, MasterMobsWithSourceTracksInSlotOrder) {
    master(10, L"lower", &kAAFUsage_LowerLevel);
    master(11, L"plain");
    master(12, L"");  // no name: abandoned with an error line
    std::vector<std::string> errors = lines(s.parse());
    EXPECT_EQ(errors.size(), 1u);
    ASSERT_EQ(GetNumClips(c()), 1u);
    wchar_t text[40];
    ASSERT_EQ(LoadClipName(0, text, 39, c()), 0);
    EXPECT_STREQ(text, L"plain");
    ASSERT_EQ(LoadClipID(0, text, 39, c()), 0);
    EXPECT_STREQ(text, L"{0000000b000000000000000000000000}");
    EXPECT_EQ(GetClipIsVideo(0, 0, c()), 3u);
    EXPECT_EQ(GetClipIsVideo(0, 1, c()), 4u);
    EXPECT_EQ(GetClipIsVideo(0, 2, c()), 0xFFFFFFFFu);
    EXPECT_EQ(LoadClipType(0, c()), 0u) << "no file mob, no essence";
    EXPECT_EQ(path(0), L"");
    s.parse();
    EXPECT_EQ(GetNumClips(c()), 2u) << "a second pass appends again";
}

TEST_F(Catalogue, FileMobsAddPictureSoundAndPath) {
    master(11, L"clip");
    Object& picture = aafkit::createCDCIDescriptor(s.file());
    aafkit::setUInt32(picture, PID_DigitalImageDescriptor_StoredHeight, 1080);
    aafkit::setUInt32(picture, PID_DigitalImageDescriptor_StoredWidth, 1920);
    aafkit::setRational(picture, PID_FileDescriptor_SampleRate, {25, 1});
    ASSERT_EQ(aafkit::appendObject(picture, PID_EssenceDescriptor_Locator,
                                   aafkit::createNetworkLocator(s.file(), L"file:///media/picture.mxf")),
              0);
    fileMob(201, picture);
    s.parse();
    EXPECT_EQ(LoadClipType(0, c()), 1u);
    EXPECT_EQ(c()->clips[0].height, 1080u);
    EXPECT_EQ(c()->clips[0].width, 1920u);
    EXPECT_EQ(c()->clips[0].frameRate, 25.0);
    EXPECT_EQ(path(0), L"file:///media/picture.mxf");

    Object& sound = aafkit::createObject(s.file(), AUID_AAFWAVEDescriptor);
    aafkit::setBytes(sound, PID_WAVEDescriptor_Summary, {'R', 'I', 'F', 'F'});
    aafkit::setRational(sound, PID_FileDescriptor_SampleRate, {48000, 1});
    fileMob(202, sound);
    c()->clips.clear();
    s.parse();
    EXPECT_EQ(LoadClipType(0, c()), 3u);
    EXPECT_EQ(c()->clips[0].sampleRate, 48000.0);
    EXPECT_EQ(path(0), L"file:///media/picture.mxf") << "a later file mob without a locator keeps the path";
}

TEST_F(Catalogue, LocatorFoundDownTheSourceChain) {
    master(11, L"clip");
    Object& sound = aafkit::createObject(s.file(), AUID_AAFWAVEDescriptor);
    aafkit::setBytes(sound, PID_WAVEDescriptor_Summary, {0});
    Object& file = fileMob(202, sound);
    s.slot(file, 1, s.clip(300, 1, 100, 0));
    Object& import = aafkit::createObject(s.file(), AUID_AAFImportDescriptor);
    ASSERT_EQ(aafkit::appendObject(import, PID_EssenceDescriptor_Locator,
                                   aafkit::createNetworkLocator(s.file(), L"file:///tape.wav")),
              0);
    fileMob(300, import);
    s.parse();
    EXPECT_EQ(path(0), L"file:///tape.wav");
    EXPECT_EQ(LoadClipType(0, c()), 2u);
}

TEST_F(Catalogue, SourceChainThatLoopsEnds) {
    master(11, L"clip");
    Object& sound = aafkit::createObject(s.file(), AUID_AAFWAVEDescriptor);
    aafkit::setBytes(sound, PID_WAVEDescriptor_Summary, {0});
    Object& file = fileMob(202, sound);
    for (uint32_t slot = 1; slot <= 40; ++slot) s.slot(file, slot, s.clip(202, 1, 100, 0));
    s.parse();
    EXPECT_EQ(path(0), L"");
    EXPECT_EQ(LoadClipType(0, c()), 2u);
}

}  // namespace
