#pragma once
// AAF files for the media tests: clips written through the tool's write command, then
// given embedded essence of a chosen form through aafkit.
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "AudioFixtures.h"
#include "ToolRunner.h"
#include "aafkit/Essence.h"
#include "aafkit/File.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "support/SampleFiles.h"

namespace testsupport {

// One audio clip of the description: `frames` samples at 48 kHz, 25 fps, timecode from 01:00:00:00.
inline nlohmann::json audioClip(const std::string& name, const std::string& path, int channels, int bits,
                                size_t frames) {
    return {{"name", name},
            {"path", path},
            {"length", 25},
            {"startTimecode", 90000},
            {"rate", {25, 1}},
            {"tracks",
             {{{"kind", "audio"},
               {"editRate", {25, 1}},
               {"length", 25},
               {"channels", channels},
               {"bitsPerSample", bits},
               {"sampleRate", 48000},
               {"sampleLength", frames}}}}};
}

// Writes the clips, each used once in an audio track, to `path` through the tool.
inline void writeClips(const std::string& path, const std::vector<nlohmann::json>& clips) {
    nlohmann::json events = nlohmann::json::array();
    for (const auto& clip : clips)
        events.push_back({{"type", "clip"}, {"clip", clip["name"]}, {"inPoint", 0}, {"length", 25}});
    const nlohmann::json description = {
        {"clips", nlohmann::json(clips)},
        {"composition", {{"name", "Media"}, {"rate", {25, 1}}, {"timecodeStart", 90000}, {"timecodeLength", 100}}},
        {"tracks", {{{"kind", "audio"}, {"events", events}}}}};
    const std::string json = path + ".json";
    std::ofstream(json) << description.dump();
    const ToolRun run = runTool("write " + quoted(json) + " " + quoted(path));
    std::remove(json.c_str());
    ASSERT_EQ(run.exitCode, 0) << run.output;
}

// The file source mob under the master clip of that name.
inline aafkit::Object* fileMobOf(const aafkit::File& file, const std::string& clipName) {
    std::vector<aafkit::Object*> masters;
    aafkit::getMobs(file, aafkit::kAAFMasterMob, masters);
    for (aafkit::Object* master : masters) {
        std::wstring name;
        aafkit::getString(*master, PID_Mob_Name, name);
        aafkit::Object* segment = nullptr;
        aafMobID_t id;
        if (aafkit::wideToUtf8(name) == clipName &&
            aafkit::getObject(*aafkit::getSlots(*master).at(0), PID_MobSlot_Segment, segment) == AAFRESULT_SUCCESS &&
            aafkit::getMobId(*segment, PID_SourceReference_SourceID, id) == AAFRESULT_SUCCESS)
            return file.lookupMob(id);
    }
    return nullptr;
}

// Replaces the clip's descriptor with a PCMDescriptor claiming `claimedFrames` and embeds `stream`.
inline void embedRawPcm(aafkit::File& file, const std::string& clipName, const Pcm& pcm, int64_t claimedFrames,
                        std::vector<uint8_t> stream) {
    aafkit::Object* mob = fileMobOf(file, clipName);
    ASSERT_NE(mob, nullptr) << clipName;
    aafkit::Object& descriptor = *file.create(AUID_AAFPCMDescriptor);
    aafkit::setUInt32(descriptor, PID_SoundDescriptor_Channels, uint32_t(pcm.channels));
    aafkit::setUInt32(descriptor, PID_SoundDescriptor_QuantizationBits, uint32_t(pcm.bits));
    aafkit::setRational(descriptor, PID_SoundDescriptor_AudioSamplingRate, {pcm.rate, 1});
    aafkit::setUInt16(descriptor, PID_PCMDescriptor_BlockAlign, uint16_t(pcm.channels * pcm.bits / 8));
    aafkit::setRational(descriptor, PID_FileDescriptor_SampleRate, {pcm.rate, 1});
    aafkit::setInt64(descriptor, PID_FileDescriptor_Length, claimedFrames);
    ASSERT_EQ(aafkit::setObject(*mob, PID_SourceMob_EssenceDescription, descriptor), AAFRESULT_SUCCESS);
    aafMobID_t id;
    aafkit::getMobId(*mob, PID_Mob_MobID, id);
    ASSERT_EQ(aafkit::addEssenceData(file, id, std::make_unique<aafkit::MemoryStream>(std::move(stream))),
              AAFRESULT_SUCCESS);
}

// Embeds `stored` under a descriptor of class `descriptorClass` (a WAVEDescriptor gets `summary`).
inline void embedStored(aafkit::File& file, const std::string& clipName, const aafUID_t& descriptorClass,
                        std::vector<uint8_t> summary, std::vector<uint8_t> stored) {
    aafkit::Object* mob = fileMobOf(file, clipName);
    ASSERT_NE(mob, nullptr) << clipName;
    aafkit::Object& descriptor = *file.create(descriptorClass);
    if (descriptorClass == AUID_AAFWAVEDescriptor)
        aafkit::setBytes(descriptor, PID_WAVEDescriptor_Summary, std::move(summary));
    aafkit::setRational(descriptor, PID_FileDescriptor_SampleRate, {48000, 1});
    ASSERT_EQ(aafkit::setObject(*mob, PID_SourceMob_EssenceDescription, descriptor), AAFRESULT_SUCCESS);
    aafMobID_t id;
    aafkit::getMobId(*mob, PID_Mob_MobID, id);
    ASSERT_EQ(aafkit::addEssenceData(file, id, std::make_unique<aafkit::MemoryStream>(std::move(stored))),
              AAFRESULT_SUCCESS);
}

inline std::unique_ptr<aafkit::File> openAaf(const std::string& path) {
    std::unique_ptr<aafkit::File> file;
    aafkit::Status why;
    EXPECT_EQ(aafkit::File::openExistingRead(path, file, &why), AAFRESULT_SUCCESS) << path << ": " << why.message();
    return file;
}

inline nlohmann::json readJson(const std::string& path) {
    std::ifstream in(path);
    return in ? nlohmann::json::parse(in, nullptr, false) : nlohmann::json();
}

}  // namespace testsupport
