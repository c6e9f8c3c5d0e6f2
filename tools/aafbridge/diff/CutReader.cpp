#include <algorithm>
#include <cstdio>
#include <memory>
#include <regex>
#include <set>
#include <unordered_set>

#include "composition/ClipSourceTime.h"
#include "composition/Composition.h"
#include "composition/EditTime.h"
#include "diff/Cut.h"

using namespace composition;

namespace cutdiff {
namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// An operation as text that is equal exactly when the operations are: name, then each
// parameter's value or key frames.
std::string operationText(const Operation& operation) {
    std::string text = operation.name.empty() ? aafkit::auidToText(operation.id) : operation.name;
    text += "(";
    for (const Parameter& parameter : operation.parameters) {
        text += (parameter.name.empty() ? aafkit::auidToText(parameter.id) : parameter.name) + "=";
        if (!parameter.varying) text += number(parameter.value);
        for (const KeyFrame& key : parameter.keyFrames) text += " " + number(key.time) + ":" + number(key.value);
        text += ";";
    }
    return text + ")";
}

const Parameter* speedRatio(const Operation& operation) {
    for (const Parameter& parameter : operation.parameters)
        if (parameter.name == "SpeedRatio") return &parameter;
    return nullptr;
}

void appendText(std::string& list, const std::string& text) { list += (list.empty() ? "" : "; ") + text; }

std::string sourceMedia(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    const SourceLink* link = chain.origin();
    std::string media = mediaUrl(chain);
    if (media.empty()) media = link ? link->mob->name : clipName(clip);
    return media + "/" + std::to_string(link ? link->slotId : clip.source.slotId);
}

std::string sourceKey(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    const SourceLink* link = chain.origin();
    if (!link) link = chain.find(MobKind::Master);
    if (link) return aafkit::mobIdToText(link->mob->mobId) + "/" + std::to_string(link->slotId);
    return aafkit::mobIdToText(clip.source.mobId) + "/" + std::to_string(clip.source.slotId);
}

// The event cut down to [from, to) of its record, its source following at its speed.
bool clipEvent(CutEvent& event, int64_t from, int64_t to) {
    from = std::max(from, event.recordIn);
    to = std::min(to, event.recordOut);
    if (to <= from) return false;
    const double scale = event.recordLength() ? double(event.sourceLength()) / double(event.recordLength()) : 1.0;
    event.sourceIn += int64_t(std::llround(double(from - event.recordIn) * scale));
    event.sourceOut -= int64_t(std::llround(double(event.recordOut - to) * scale));
    event.recordIn = from;
    event.recordOut = to;
    return true;
}

// The slots of the nested scopes around what is being read, innermost last.
struct Scope {
    const Segment* scope;
    size_t slot;     // the slot being read
    int64_t start;   // where the scope starts, in the reading's edit units
};

// Walks a track's segments, keeping its place, into events.
class EventCollector {
public:
    EventCollector(const aafRational_t& rate, std::vector<Scope> scopes = {}) : rate_(rate), scopes_(std::move(scopes)) {}

    void add(const Segment& segment) {
        switch (segment.kind) {
        case SegmentKind::Sequence: return addSequence(segment);
        case SegmentKind::SourceClip: return addClip(segment);
        case SegmentKind::Transition: return addTransition(segment);
        case SegmentKind::OperationGroup: return addOperation(segment);
        case SegmentKind::MultichannelAudio:
        case SegmentKind::Selector:
        case SegmentKind::EssenceGroup: return addFirstChild(segment);
        case SegmentKind::NestedComposition: return addNest(segment);
        case SegmentKind::NestedScope: return addScope(segment);
        case SegmentKind::ScopeReference: return addScopeReference(segment);
        case SegmentKind::Marker: return;
        default: position_ += std::max<int64_t>(0, segment.length);
        }
    }

    std::vector<CutEvent> take() { return std::move(events_); }

private:
    struct PendingTransition {
        int64_t cut;
        std::string text;
        size_t eventsBefore;
    };

    void emit(CutEvent event) {
        if (pending_) {
            if (event.recordIn < pending_->cut && !clipEvent(event, pending_->cut, event.recordOut)) return;
            event.transition = pending_->text;
            pending_.reset();
        }
        if (event.recordLength() > 0) events_.push_back(std::move(event));
    }

    void addSequence(const Segment& sequence) {
        for (const Segment& child : sequence.children) {
            const bool afterTransition = pending_.has_value();
            add(child);
            // A transition into nothing (a fade out) belongs to the event it leaves.
            if (afterTransition && pending_) {
                if (pending_->eventsBefore > 0) events_[pending_->eventsBefore - 1].transition = pending_->text;
                pending_.reset();
            }
        }
    }

    void addClip(const Segment& clip) {
        if (clip.length <= 0) return;
        CutEvent event;
        event.recordIn = position_;
        event.recordOut = position_ + clip.length;
        event.sourceKey = sourceKey(clip);
        event.sourceMedia = sourceMedia(clip);
        event.sourceName = clipName(clip);
        event.sourceIn = sourceStart(clip, rate_);
        event.sourceOut = event.sourceIn + clip.length;
        position_ += clip.length;
        emit(std::move(event));
    }

    // A transition overlaps the items on either side: the cut is where one gives way to the other.
    void addTransition(const Segment& transition) {
        position_ -= std::max<int64_t>(0, transition.length);
        const int64_t cut = position_ + transition.cutPoint;
        if (!events_.empty() && events_.back().recordOut > cut)
            if (!clipEvent(events_.back(), events_.back().recordIn, cut)) events_.pop_back();
        pending_ = PendingTransition{cut, operationText(transition.operation) + " length " +
                                              std::to_string(transition.length) + " cut " +
                                              std::to_string(transition.cutPoint),
                                     events_.size()};
    }

    void addFirstChild(const Segment& segment) {
        if (segment.children.empty()) {
            position_ += std::max<int64_t>(0, segment.length);
            return;
        }
        const int64_t end = position_ + segment.length;
        splice(collect(segment.children.front(), rate_, scopes_), 0, segment.length);
        position_ = end;
    }

    void addOperation(const Segment& group) {
        if (group.children.empty()) {
            position_ += std::max<int64_t>(0, group.length);
            return;
        }
        std::vector<CutEvent> inner = collect(group.children.front(), rate_, scopes_);
        const Parameter* speed = speedRatio(group.operation);
        if (speed || group.operation.timeWarp) {
            stretch(inner, group.length);
            for (CutEvent& event : inner) event.speed = speed ? speed->value : 1.0;
        } else {
            const std::string text = operationText(group.operation);
            for (CutEvent& event : inner) appendText(group.data == DataKind::Sound ? event.levels : event.effects, text);
        }
        const int64_t end = position_ + group.length;
        splice(std::move(inner), 0, group.length);
        position_ = end;
    }

    // A speed change plays its input's material in the operation's length.
    static void stretch(std::vector<CutEvent>& inner, int64_t length) {
        if (inner.empty() || inner.back().recordOut <= 0) return;
        const double scale = double(length) / double(inner.back().recordOut);
        for (CutEvent& event : inner) {
            event.recordIn = int64_t(std::llround(double(event.recordIn) * scale));
            event.recordOut = int64_t(std::llround(double(event.recordOut) * scale));
        }
    }

    void addNest(const Segment& nest) {
        const int64_t end = position_ + std::max<int64_t>(0, nest.length);
        if (!nest.children.empty()) {
            std::vector<CutEvent> inner = collect(nest.children.front(), nest.nestedRate, {});
            for (CutEvent& event : inner) {
                for (int64_t* time : {&event.recordIn, &event.recordOut, &event.sourceIn, &event.sourceOut})
                    *time = convertEditUnits(*time, nest.nestedRate, rate_);
            }
            splice(std::move(inner), convertEditUnits(nest.source.startTime, nest.nestedRate, rate_), nest.length);
        }
        position_ = end;
    }

    // Layers of a nested scope: the last is on top, reaching down to the others where it refers to them.
    void addScope(const Segment& scope) {
        const int64_t end = position_ + std::max<int64_t>(0, scope.length);
        if (!scope.children.empty()) {
            std::vector<Scope> scopes = scopes_;
            scopes.push_back({&scope, scope.children.size() - 1, 0});
            splice(collect(scope.children.back(), rate_, std::move(scopes)), 0, scope.length);
        }
        position_ = end;
    }

    void addScopeReference(const Segment& reference) {
        const int64_t end = position_ + std::max<int64_t>(0, reference.length);
        if (reference.relativeScope < scopes_.size()) {
            std::vector<Scope> scopes(scopes_.begin(), scopes_.end() - reference.relativeScope);
            Scope& target = scopes.back();
            if (reference.relativeSlot >= 1 && reference.relativeSlot <= target.slot) {
                target.slot -= reference.relativeSlot;
                const Segment& slot = target.scope->children[target.slot];
                const int64_t inScope = position_ - scopes_.back().start;
                splice(collect(slot, rate_, std::move(scopes)), inScope, reference.length);
            }
        }
        position_ = end;
    }

    // The part [start, start + length) of `inner` placed at the current position.
    void splice(std::vector<CutEvent> inner, int64_t start, int64_t length) {
        for (CutEvent& event : inner) {
            if (!clipEvent(event, start, start + length)) continue;
            event.recordIn += position_ - start;
            event.recordOut += position_ - start;
            emit(std::move(event));
        }
    }

    static std::vector<CutEvent> collect(const Segment& segment, const aafRational_t& rate, std::vector<Scope> scopes) {
        EventCollector inner(rate, std::move(scopes));
        inner.add(segment);
        return inner.take();
    }

    aafRational_t rate_;
    std::vector<Scope> scopes_;
    int64_t position_ = 0;
    std::vector<CutEvent> events_;
    std::optional<PendingTransition> pending_;
};

bool isCutTrack(const Track& track) {
    return track.slotClass == SlotClass::Timeline && (track.data == DataKind::Picture || track.data == DataKind::Sound);
}

// A track's name where it is a track label ("V2", "A12") not yet taken, else its kind and number.
std::string trackLabel(const Track& track, uint32_t number, std::set<std::string>& taken) {
    static const std::regex label("[VA][1-9][0-9]{0,3}");
    if (std::regex_match(track.name, label) && taken.insert(track.name).second) return track.name;
    const std::string letter = track.data == DataKind::Picture ? "V" : "A";
    while (!taken.insert(letter + std::to_string(number)).second) ++number;
    return letter + std::to_string(number);
}

std::vector<CutTrack> cutTracks(const Composition& composition) {
    std::vector<CutTrack> tracks;
    std::set<std::string> taken;
    uint32_t pictures = 0, sounds = 0;
    for (const Track& track : composition.tracks) {
        if (!isCutTrack(track)) continue;
        CutTrack cut;
        cut.kind = track.data == DataKind::Picture ? TrackKind::Picture : TrackKind::Sound;
        cut.label = trackLabel(track, cut.kind == TrackKind::Picture ? ++pictures : ++sounds, taken);
        cut.editRate = track.editRate;
        EventCollector collector(track.editRate);
        collector.add(track.segment);
        cut.events = collector.take();
        tracks.push_back(std::move(cut));
    }
    return tracks;
}

// The track a marker belongs to: the first it describes, else (describing none) the one that
// holds it; a marker on the timecode, as sequence markers are, goes with the first picture track.
const CutTrack* markerTrack(const Marker& marker, const Composition& composition, const std::vector<CutTrack>& tracks) {
    std::vector<uint32_t> slots = marker.describedSlots;
    if (slots.empty()) slots.push_back(marker.slotId);
    for (uint32_t slot : slots) {
        size_t index = 0;
        for (const Track& track : composition.tracks) {
            if (!isCutTrack(track)) continue;
            if (track.slotId == slot) return &tracks[index];
            ++index;
        }
    }
    for (const CutTrack& track : tracks)
        if (track.kind == TrackKind::Picture) return &track;
    return tracks.empty() ? nullptr : &tracks.front();
}

std::vector<CutMarker> cutMarkers(const Composition& composition, const std::vector<CutTrack>& tracks) {
    std::vector<CutMarker> markers;
    for (const Marker& marker : composition.markers) {
        const CutTrack* track = markerTrack(marker, composition, tracks);
        if (!track) break;
        markers.push_back({track->label, convertEditUnits(marker.position, marker.editRate, track->editRate),
                           marker.comment.empty() ? marker.name : marker.comment, colourName(marker)});
    }
    return markers;
}

// An identifier with the media it stands for: two files made apart can give one identifier to
// different media (identifiers are made from the clock), never the same pair.
std::string identified(const CutEvent& event) { return event.sourceKey + "\n" + event.sourceMedia; }

std::unordered_set<std::string> identifiedSources(const Cut& cut) {
    std::unordered_set<std::string> sources;
    for (const CutTrack& track : cut.tracks)
        for (const CutEvent& event : track.events) sources.insert(identified(event));
    return sources;
}

void keyByMediaUnlessIn(Cut& cut, const std::unordered_set<std::string>& shared) {
    for (CutTrack& track : cut.tracks)
        for (CutEvent& event : track.events)
            if (!shared.count(identified(event))) event.sourceKey = "media:" + event.sourceMedia;
}

}  // namespace

void shareSourceKeys(Cut& before, Cut& after) {
    const std::unordered_set<std::string> beforeSources = identifiedSources(before), afterSources = identifiedSources(after);
    keyByMediaUnlessIn(before, afterSources);
    keyByMediaUnlessIn(after, beforeSources);
}

const CutTrack* Cut::find(const std::string& label) const {
    for (const CutTrack& track : tracks)
        if (track.label == label) return &track;
    return nullptr;
}

Cut cutFromComposition(const Composition& composition) {
    Cut cut;
    cut.name = composition.name;
    if (composition.timecode)
        cut.start = StartTimecode{composition.timecode->start, composition.timecode->fps, composition.timecode->drop,
                                  composition.timecode->editRate};
    cut.tracks = cutTracks(composition);
    cut.markers = cutMarkers(composition, cut.tracks);
    return cut;
}

}  // namespace cutdiff
