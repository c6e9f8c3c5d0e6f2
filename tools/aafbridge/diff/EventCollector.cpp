#include "diff/EventCollector.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "composition/ClipSourceTime.h"
#include "composition/EditTime.h"

using namespace composition;

namespace cutdiff {
namespace {

// An operation as text that is equal exactly when the operations are: name, then each
// parameter's value or key frames.
std::string operationText(const Operation& operation) {
    std::string text = operation.name.empty() ? aafkit::auidToText(operation.id) : operation.name;
    text += "(";
    for (const Parameter& parameter : operation.parameters) {
        text += (parameter.name.empty() ? aafkit::auidToText(parameter.id) : parameter.name) + "=";
        if (!parameter.varying) text += numberText(parameter.value);
        for (const KeyFrame& key : parameter.keyFrames) text += " " + numberText(key.time) + ":" + numberText(key.value);
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

// The event cut down to [from, to) of its record, its source following at its speed.
bool clipEvent(CutEvent& event, int64_t from, int64_t to) {
    from = std::max(from, event.recordIn);
    to = std::min(to, event.recordOut);
    if (to <= from) return false;
    const double scale = event.recordLength() ? double(event.sourceLength()) / double(event.recordLength()) : 1.0;
    event.sourceIn = heldInRange(event.sourceIn + roundedInRange(double(from - event.recordIn) * scale));
    event.sourceOut = heldInRange(event.sourceOut - roundedInRange(double(event.recordOut - to) * scale));
    event.recordIn = from;
    event.recordOut = to;
    return true;
}

// A speed change plays its input's material in the operation's length.
void stretch(std::vector<CutEvent>& inner, int64_t length) {
    if (inner.empty() || inner.back().recordOut <= 0) return;
    const double scale = double(length) / double(inner.back().recordOut);
    for (CutEvent& event : inner) {
        event.recordIn = roundedInRange(double(event.recordIn) * scale);
        event.recordOut = roundedInRange(double(event.recordOut) * scale);
    }
}

int64_t lengthOf(const Segment& segment) { return std::clamp<int64_t>(segment.length, 0, kFarthest); }

// Avid's mixed-rate sequences (the input of a motion adapter, as a speed change is) count their
// components at a rate of their own, named in two attributes.
std::optional<aafRational_t> mixedRate(const Segment& sequence) {
    const TaggedValue* numerator = sequence.metadata.find("_MIXMATCH_RATE_NUM");
    const TaggedValue* denominator = sequence.metadata.find("_MIXMATCH_RATE_DENOM");
    if (!numerator || !denominator) return std::nullopt;
    const long n = std::strtol(numerator->value.c_str(), nullptr, 10), d = std::strtol(denominator->value.c_str(), nullptr, 10);
    if (n <= 0 || d <= 0 || n > INT32_MAX || d > INT32_MAX) return std::nullopt;
    return aafRational_t{int32_t(n), int32_t(d)};
}

void convertTimes(std::vector<CutEvent>& events, const aafRational_t& from, const aafRational_t& to) {
    for (CutEvent& event : events)
        for (int64_t* time : {&event.recordIn, &event.recordOut, &event.sourceIn, &event.sourceOut})
            *time = heldInRange(convertEditUnits(*time, from, to));
}

}  // namespace

void EventCollector::add(const Segment& segment) {
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
    default: skip(segment);
    }
}

void EventCollector::skip(const Segment& segment) { position_ = heldInRange(position_ + lengthOf(segment)); }

void EventCollector::emit(CutEvent event) {
    if (pending_) {
        if (event.recordIn < pending_->cut && !clipEvent(event, pending_->cut, event.recordOut)) return;
        event.transition = pending_->text;
        pending_.reset();
    }
    // Events never overlap: where a damaged file's would, the later gives way.
    if (!events_.empty() && event.recordIn < events_.back().recordOut &&
        !clipEvent(event, events_.back().recordOut, event.recordOut))
        return;
    if (event.recordLength() > 0) events_.push_back(std::move(event));
}

void EventCollector::addSequence(const Segment& sequence) {
    if (const std::optional<aafRational_t> rate = mixedRate(sequence); rate && !sameRate(*rate, rate_))
        return addAtRate(sequence, *rate);
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

void EventCollector::addClip(const Segment& clip) {
    if (clip.length <= 0) return;
    CutEvent event;
    event.recordIn = position_;
    event.recordOut = position_ + lengthOf(clip);
    event.source = walk_.sources.of(clip);
    event.sourceIn = heldInRange(sourceStart(clip, rate_));
    event.sourceOut = event.sourceIn + lengthOf(clip);
    skip(clip);
    emit(std::move(event));
}

// A transition overlaps the items on either side: the cut is where one gives way to the other.
void EventCollector::addTransition(const Segment& transition) {
    position_ = heldInRange(position_ - lengthOf(transition));
    const int64_t cut = heldInRange(position_ + heldInRange(transition.cutPoint));
    if (!events_.empty() && events_.back().recordOut > cut)
        if (!clipEvent(events_.back(), events_.back().recordIn, cut)) events_.pop_back();
    pending_ = PendingTransition{cut,
                                 operationText(transition.operation) + " length " + std::to_string(transition.length) +
                                     " cut " + std::to_string(transition.cutPoint),
                                 events_.size()};
}

std::vector<CutEvent> EventCollector::collectHere(const Segment& segment) {
    EventCollector inner(rate_, walk_, scopes_, heldInRange(base_ + position_));
    inner.add(segment);
    return inner.take();
}

void EventCollector::addFirstChild(const Segment& segment) {
    if (!segment.children.empty()) splice(collectHere(segment.children.front()), 0, lengthOf(segment));
    skip(segment);
}

void EventCollector::addOperation(const Segment& group) {
    if (group.children.empty()) return skip(group);
    std::vector<CutEvent> inner = collectHere(group.children.front());
    const Parameter* speed = speedRatio(group.operation);
    if (speed || group.operation.timeWarp) {
        stretch(inner, lengthOf(group));
        for (CutEvent& event : inner) event.speed = speed ? speed->value : 1.0;
    } else {
        const std::string text = operationText(group.operation);
        for (CutEvent& event : inner) appendText(group.data == DataKind::Sound ? event.levels : event.effects, text);
    }
    splice(inner, 0, lengthOf(group));
    skip(group);
}

// What is counted at another rate starts scopes of its own.
void EventCollector::addAtRate(const Segment& segment, const aafRational_t& rate) {
    EventCollector walk(rate, walk_);
    walk.add(segment);
    std::vector<CutEvent> inner = walk.take();
    convertTimes(inner, rate, rate_);
    const int64_t length = heldInRange(convertEditUnits(lengthOf(segment), rate, rate_));
    splice(inner, 0, length);
    position_ = heldInRange(position_ + length);
}

// A nest starts scopes of its own, at its own rate.
void EventCollector::addNest(const Segment& nest) {
    if (!nest.children.empty()) {
        EventCollector walk(nest.nestedRate, walk_);
        walk.add(nest.children.front());
        std::vector<CutEvent> inner = walk.take();
        convertTimes(inner, nest.nestedRate, rate_);
        splice(inner, heldInRange(convertEditUnits(nest.source.startTime, nest.nestedRate, rate_)), lengthOf(nest));
    }
    skip(nest);
}

// Layers of a nested scope: the last is on top, reaching down to the others where it refers to them.
void EventCollector::addScope(const Segment& scope) {
    if (!scope.children.empty()) {
        std::vector<Scope> scopes = scopes_;
        scopes.push_back({&scope, scope.children.size() - 1, heldInRange(base_ + position_)});
        splice(scopeSlot(std::move(scopes)), 0, lengthOf(scope));
    }
    skip(scope);
}

void EventCollector::addScopeReference(const Segment& reference) {
    if (reference.relativeScope < scopes_.size()) {
        std::vector<Scope> scopes(scopes_.begin(), scopes_.end() - reference.relativeScope);
        // Where this is in the referred scope: out through each scope's start.
        int64_t inScope = base_ + position_;
        for (size_t i = scopes.size(); i < scopes_.size(); ++i) inScope = heldInRange(inScope + scopes_[i].start);
        Scope& target = scopes.back();
        if (reference.relativeSlot >= 1 && reference.relativeSlot <= target.slot) {
            target.slot -= reference.relativeSlot;
            splice(scopeSlot(std::move(scopes)), inScope, lengthOf(reference));
        }
    }
    skip(reference);
}

// The events of the innermost scope's slot, walked once however often it is referred to.
const std::vector<CutEvent>& EventCollector::scopeSlot(std::vector<Scope> scopes) {
    const Scope& slot = scopes.back();
    const auto key = std::make_pair(slot.scope, slot.slot);
    auto found = walk_.scopeSlots.find(key);
    if (found != walk_.scopeSlots.end()) return found->second;
    EventCollector walk(rate_, walk_, scopes, 0);
    walk.add(slot.scope->children[slot.slot]);
    return walk_.scopeSlots.emplace(key, walk.take()).first->second;
}

void EventCollector::splice(const std::vector<CutEvent>& inner, int64_t start, int64_t length) {
    // Events are in record order: the first that ends after `start` is found by halving.
    auto first = std::partition_point(inner.begin(), inner.end(),
                                      [&](const CutEvent& event) { return event.recordOut <= start; });
    for (auto event = first; event != inner.end() && event->recordIn < start + length; ++event) {
        CutEvent placed = *event;
        if (!clipEvent(placed, start, start + length)) continue;
        placed.recordIn = heldInRange(placed.recordIn + position_ - start);
        placed.recordOut = heldInRange(placed.recordOut + position_ - start);
        emit(std::move(placed));
    }
}

}  // namespace cutdiff
