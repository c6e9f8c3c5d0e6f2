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

TEST(SampleComposition, EveryKindOfSlotIsKeptInFileOrder) {
    if (!std::filesystem::exists(testsupport::sample("media-composer/essence_group.aaf"))) GTEST_SKIP() << "no samples";
    const composition::Composition read = readSample("media-composer/essence_group.aaf");
    ASSERT_EQ(read.tracks.size(), 10u);
    for (size_t i = 0; i < read.tracks.size(); ++i) EXPECT_EQ(read.tracks[i].slotId, i + 1);
    EXPECT_EQ(read.tracks[0].segment.kind, composition::SegmentKind::Timecode);
    EXPECT_EQ(read.tracks[0].segment.timecode.start, 87162);
    ASSERT_EQ(read.tracks[1].segment.kind, composition::SegmentKind::Pulldown);
    ASSERT_EQ(read.tracks[1].segment.children.size(), 1u);
    EXPECT_EQ(read.tracks[1].segment.children[0].timecode.fps, 25);
    EXPECT_EQ(read.tracks[7].segment.kind, composition::SegmentKind::Edgecode);
    EXPECT_EQ(read.tracks[8].data, composition::DataKind::Picture);
    ASSERT_TRUE(read.timecode.has_value());
    EXPECT_EQ(read.timecode->fps, 24);
}
