#pragma once
// A piece of a track as the file holds it: sequences, clips with their sources, fillers,
// transitions, effects with their parameters, nests, selectors and the rest.
#include <cstdint>
#include <string>
#include <vector>

#include "SourceChain.h"
#include "TaggedValue.h"
#include "aafkit/AafTypes.h"

namespace composition {

enum class SegmentKind {
    Sequence,
    SourceClip,
    NestedComposition,  // a source clip whose source is another composition
    Filler,
    Transition,
    OperationGroup,
    MultichannelAudio,  // Avid's audio channel combiner: one clip, a child per channel
    NestedScope,
    ScopeReference,
    Selector,
    EssenceGroup,
    Timecode,
    Edgecode,
    Pulldown,  // film and video rates converted: its input as its child
    Marker,  // markers inside a track's sequence; kept in place, and in the composition's list
    Other,
};
const char* segmentKindName(SegmentKind kind);

enum class DataKind { Picture, Sound, Timecode, Edgecode, Descriptive, Other };
const char* dataKindName(DataKind kind);

struct KeyFrame {
    double time = 0;  // a fraction of the operation's length
    double value = 0;
};

struct Parameter {
    std::string name;
    aafUID_t id = {};
    bool varying = false;
    double value = 0;            // a constant, or the first key frame's
    std::string interpolation;   // varying values: "Linear", "Constant", ...
    std::vector<KeyFrame> keyFrames;
};

struct Operation {
    std::string name;
    aafUID_t id = {};
    bool timeWarp = false;
    std::vector<Parameter> parameters;

    const Parameter* find(const aafUID_t& parameterId) const;
};

// Where a source clip points, and the chain that reference leads through.
struct ClipSource {
    aafMobID_t mobId = {};
    uint32_t slotId = 0;
    int64_t startTime = 0;  // in the referenced slot's edit units
    SourceChain chain;
};

struct Segment {
    SegmentKind kind = SegmentKind::Other;
    std::string className;  // the stored class, for what the kinds do not name
    DataKind data = DataKind::Other;
    int64_t length = 0;
    Metadata metadata;
    std::string problem;  // why part of it could not be read; what was read is kept

    ClipSource source;             // SourceClip, NestedComposition
    std::string nestedName;        // NestedComposition: the composition's name
    aafRational_t nestedRate = {0, 1};  // NestedComposition: the referenced slot's edit rate
    int64_t cutPoint = 0;          // Transition
    Operation operation;           // OperationGroup, Transition
    Timecode timecode;             // Timecode
    uint32_t relativeScope = 0;    // ScopeReference: scopes out from the innermost,
    uint32_t relativeSlot = 0;     // and slots back from the referring one
    // Sequence: its components; OperationGroup: its inputs; MultichannelAudio: its channels; Selector: the selected segment,
    // then the alternates; EssenceGroup: its choices; NestedScope: its slots;
    // NestedComposition: the referenced slot's segment.
    std::vector<Segment> children;
};

}  // namespace composition
