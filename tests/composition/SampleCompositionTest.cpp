// Real files read as they hold their compositions: multichannel audio as one item with its
// channels, and each clip's chain down to its source's timecode.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "aafkit/File.h"
#include "composition/ClipSourceTime.h"
#include "composition/Composition.h"
#include "support/SampleFiles.h"

namespace {

composition::Composition readSample(const std::string& relative) {
    std::unique_ptr<aafkit::File> file;
    composition::Composition read;
    std::string why;
    EXPECT_EQ(aafkit::File::openExistingRead(testsupport::sample(relative), file), 0);
    if (file) {
        EXPECT_TRUE(composition::readComposition(*file, read, why)) << why;
    }
    return read;
}

void forEachSegment(const composition::Segment& segment, const std::function<void(const composition::Segment&)>& visit) {
    visit(segment);
    for (const composition::Segment& child : segment.children) forEachSegment(child, visit);
}

}  // namespace

TEST(SampleComposition, StereoClipsAreOneItemWithTwoChannels) {
    if (!std::filesystem::exists(testsupport::sample("media-composer/MC_Fades.aaf"))) GTEST_SKIP() << "no samples";
    const composition::Composition read = readSample("media-composer/MC_Fades.aaf");
    int stereo = 0;
    for (const composition::Track& track : read.tracks) {
        int onTrack = 0;
        forEachSegment(track.segment, [&](const composition::Segment& segment) {
            if (segment.kind != composition::SegmentKind::MultichannelAudio) return;
            ++onTrack;
            ASSERT_EQ(segment.children.size(), 2u);
            for (const composition::Segment& channel : segment.children) {
                EXPECT_EQ(channel.kind, composition::SegmentKind::SourceClip);
                EXPECT_EQ(composition::clipName(channel), "stereo-identif.wav");
            }
        });
        if (onTrack) {
            EXPECT_EQ(track.trackFormat, 2u) << "the stereo track says it is stereo";
        }
        stereo += onTrack;
    }
    EXPECT_EQ(stereo, 5);
}

TEST(SampleComposition, ClipsReachTheirTapesTimecode) {
    if (!std::filesystem::exists(testsupport::sample("media-composer/simple.aaf"))) GTEST_SKIP() << "no samples";
    const composition::Composition read = readSample("media-composer/simple.aaf");
    int clips = 0;
    for (const composition::Track& track : read.tracks)
        forEachSegment(track.segment, [&](const composition::Segment& segment) {
            if (segment.kind != composition::SegmentKind::SourceClip || track.data != composition::DataKind::Picture)
                return;
            ++clips;
            const composition::SourceChain& chain = segment.source.chain;
            EXPECT_TRUE(chain.broken.empty()) << chain.broken;
            ASSERT_NE(chain.find(composition::MobKind::Master), nullptr);
            ASSERT_NE(chain.find(composition::MobKind::File), nullptr);
            ASSERT_NE(chain.timecoded(), nullptr);
            EXPECT_EQ(chain.timecoded()->mob->timecode->start, 86400);
            EXPECT_EQ(composition::sourceStart(segment, track.editRate), 86400);
        });
    EXPECT_EQ(clips, 5);
}
