// Essence inside a file: descriptors read as audio or refused with the reason, and
// stored audio embedded in a file that survives save and load with every byte.
#include <gtest/gtest.h>

#include <memory>

#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/Essence.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

std::unique_ptr<aafkit::File> newFile() { return aafkit::File::createNew(aafkit::ProductIdentification{}); }

aafkit::Object& pcmDescriptor(aafkit::File& file, uint32_t channels, uint32_t bits, aafRational_t rate) {
    aafkit::Object& d = *file.create(AUID_AAFPCMDescriptor);
    aafkit::setUInt32(d, PID_SoundDescriptor_Channels, channels);
    aafkit::setUInt32(d, PID_SoundDescriptor_QuantizationBits, bits);
    aafkit::setRational(d, PID_SoundDescriptor_AudioSamplingRate, rate);
    aafkit::setRational(d, PID_FileDescriptor_SampleRate, rate);
    aafkit::setInt64(d, PID_FileDescriptor_Length, 1234);
    return d;
}

TEST(Essence, DescriptorsReadAsAudioOrSayWhyNot) {
    std::unique_ptr<aafkit::File> file = newFile();
    aafkit::AudioDescription audio;
    ASSERT_TRUE(aafkit::describeAudio(pcmDescriptor(*file, 2, 24, {96000, 1}), audio).ok());
    EXPECT_EQ(audio.layout, aafkit::EssenceLayout::RawPcm);
    EXPECT_EQ(audio.blockAlign(), 6u);
    EXPECT_EQ(audio.sampleRate, 96000.0);
    EXPECT_EQ(audio.length, 1234);
    EXPECT_STREQ(aafkit::formatName(audio), "PCM");

    const struct {
        aafkit::Object* descriptor;
        const char* message;
    } refused[] = {
        {&pcmDescriptor(*file, 0, 16, {48000, 1}), "declares 0 channels"},
        {&pcmDescriptor(*file, 1, 16, {48000, 0}), "at 48000/0"},
        {file->create(AUID_AAFPCMDescriptor), "lacks its channels"},
        {file->create(AUID_AAFWAVEDescriptor), "no Summary"},
        {&aafkit::createCDCIDescriptor(*file), "video essence (CDCIDescriptor)"},
        {file->create(AUID_AAFTapeDescriptor), "not audio essence"},
    };
    for (const auto& r : refused) {
        const aafkit::Status s = aafkit::describeAudio(*r.descriptor, audio);
        EXPECT_NE(s.message().find(r.message), std::string::npos) << r.message << ": " << s.message();
    }
}

TEST(Essence, EmbeddedAudioSurvivesSaveAndLoad) {
    std::unique_ptr<aafkit::File> file = newFile();
    aafkit::Object& mob = aafkit::createMob(*file, AUID_AAFSourceMob);
    aafkit::check(aafkit::setObject(mob, PID_SourceMob_EssenceDescription, pcmDescriptor(*file, 1, 16, {48000, 1})));
    aafkit::addMob(*file, mob);

    // A 44-byte WAV header for 2 frames of mono 16-bit at 44100 Hz, then the frames.
    const std::vector<uint8_t> wav = {'R',  'I',  'F', 'F', 40,   0,    0, 0, 'W',  'A',  'V',  'E',
                                      'f',  'm',  't', ' ', 16,   0,    0, 0, 1,    0,    1,    0,
                                      0x44, 0xac, 0,   0,   0x88, 0x58, 1, 0, 2,    0,    16,   0,
                                      'd',  'a',  't', 'a', 4,    0,    0, 0, 0x01, 0x80, 0xff, 0x7f};
    aafkit::AudioHeader header;
    ASSERT_TRUE(aafkit::parseAudioHeader(wav.data(), wav.size(), header).ok());
    aafkit::embedStoredAudio(*file, mob, header, std::vector<uint8_t>(wav.begin(), wav.begin() + 44),
                             std::make_unique<aafkit::MemoryStream>(wav));
    aafMobID_t id;
    aafkit::getMobId(mob, PID_Mob_MobID, id);
    // A second essence for the same mob is refused.
    EXPECT_EQ(aafkit::addEssenceData(*file, id, std::make_unique<aafkit::MemoryStream>(wav)), AAFRESULT_INVALID_PARAM);

    std::vector<uint8_t> bytes;
    ASSERT_TRUE(file->saveToBytes(bytes).ok());
    std::unique_ptr<aafkit::File> loaded;
    ASSERT_TRUE(aafkit::File::load(std::move(bytes), loaded).ok());

    aafkit::Object* reloaded = loaded->lookupMob(id);
    ASSERT_NE(reloaded, nullptr);
    aafkit::Object* descriptor = nullptr;
    aafkit::getEssenceDescriptor(*reloaded, descriptor);
    ASSERT_NE(descriptor, nullptr);
    aafkit::AudioDescription audio;
    ASSERT_TRUE(aafkit::describeAudio(*descriptor, audio).ok());
    EXPECT_STREQ(aafkit::formatName(audio), "WAV");
    EXPECT_EQ(audio.sampleRate, 44100.0);
    EXPECT_EQ(audio.length, 2);
    aafkit::Object* container = nullptr;
    ASSERT_EQ(aafkit::getReferenced(*descriptor, PID_FileDescriptor_ContainerFormat, container), AAFRESULT_SUCCESS);
    aafUID_t containerId;
    aafkit::getAuid(*container, PID_DefinitionObject_Identification, containerId);
    EXPECT_TRUE(containerId == kAAFContainerDef_AAF);

    const aafkit::EssenceIndex index(*loaded);
    aafkit::Object* essence = index.find(id);
    ASSERT_NE(essence, nullptr);
    EXPECT_EQ(index.find(aafMobID_t{}), nullptr);
    const aafkit::StreamContent* stream = nullptr;
    ASSERT_EQ(aafkit::getEssenceStream(*essence, stream), AAFRESULT_SUCCESS);
    std::vector<uint8_t> content;
    ASSERT_TRUE(aafkit::readAll(*stream, content).ok());
    EXPECT_EQ(content, wav);
}

}  // namespace
