#include "diff/DiffReport.h"

#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>

#include "composition/EditTime.h"
#include "composition/TimecodeText.h"

using Json = nlohmann::ordered_json;

namespace cutdiff {
namespace {

// Record and source times of one cut as timecode.
class Clock {
public:
    explicit Clock(const Cut& cut) {
        if (cut.start && cut.start->fps > 0) {
            start_ = *cut.start;
            if (start_.editRate.numerator <= 0) start_.editRate = {start_.fps, 1};
            return;
        }
        uint16_t fps = 25;
        for (const CutTrack& track : cut.tracks) {
            const double rate = composition::rateValue(track.editRate);
            if (rate > 0 && rate <= 120) {
                fps = uint16_t(std::lround(rate));
                break;
            }
        }
        start_ = {0, fps, false, {fps, 1}};
    }

    std::string record(const CutTrack& track, int64_t position) const { return at(track, position, start_.frame); }
    std::string source(const CutTrack& track, int64_t position) const { return at(track, position, 0); }

private:
    std::string at(const CutTrack& track, int64_t position, int64_t from) const {
        return composition::timecodeText(
            from + heldInRange(composition::convertEditUnits(position, track.editRate, start_.editRate)), start_.fps,
            start_.drop);
    }
    StartTimecode start_;
};

// Both cuts with their clocks: what a change's indices and times stand for.
class Report {
public:
    explicit Report(const DiffInputs& inputs) : inputs_(inputs), beforeClock_(inputs.before), afterClock_(inputs.after) {}

    Json changeJson(const Change& change) const {
        Json json = {{"class", changeKindName(change.kind)}};
        if (!change.track.empty()) json["track"] = change.track;
        if (!change.fromTrack.empty()) json["fromTrack"] = change.fromTrack;
        if (change.before.valid()) json["old"] = eventTimes(change.before, true);
        if (change.after.valid()) json["new"] = eventTimes(change.after, false);
        if (change.also.valid()) json["newSecondPiece"] = eventTimes(change.also, false);
        if (const CutEvent* event = sourceEvent(change))
            json["source"] = {{"name", sourceName(change, *event)},
                              {"timecodeIn", sourceTimecode(change, event->sourceIn)},
                              {"timecodeOut", sourceTimecode(change, event->sourceOut)}};
        if (change.marker != kNone) json["oldMarker"] = markerJson(inputs_.before.markers[change.marker], true);
        if (change.newMarker != kNone) json["newMarker"] = markerJson(inputs_.after.markers[change.newMarker], false);
        if (change.kind != ChangeKind::StartTimecodeChanged) {
            json["shift"] = change.shift;
            json["amount"] = change.amount;
        }
        if (!change.from.empty() || !change.to.empty()) {
            json["from"] = change.from;
            json["to"] = change.to;
        }
        if (change.audioOnly) json["audioOnly"] = true;
        return json;
    }

    // Events only rippled, from `first` to `last`: one entry with their count and the shift.
    Json runJson(const Change& first, const Change& last, size_t events) const {
        Json json = {{"class", changeKindName(ChangeKind::Shifted)}, {"track", first.track}, {"events", events}};
        Json old = eventTimes(first.before, true), now = eventTimes(first.after, false);
        const Json lastOld = eventTimes(last.before, true), lastNew = eventTimes(last.after, false);
        for (const char* end : {"recordOut", "timecodeOut"}) {
            old[end] = lastOld[end];
            now[end] = lastNew[end];
        }
        json["old"] = std::move(old);
        json["new"] = std::move(now);
        json["shift"] = json["amount"] = first.shift;
        return json;
    }

    // One line: class, old and new record, source and its timecode, shift and amount.
    std::string changeLine(const Change& change) const {
        std::string line = changeKindName(change.kind);
        line.resize(std::max<size_t>(line.size() + 2, 24), ' ');  // classes in a column
        if (change.kind == ChangeKind::StartTimecodeChanged) return line + change.from + " -> " + change.to;
        if (change.marker != kNone || change.newMarker != kNone) {
            line += markerAt(change.marker, true) + " -> " + markerAt(change.newMarker, false) + "  \"" + markerText(change) + "\"";
        } else {
            line += (change.before.valid() ? recordRange(change.before, true) : std::string(23, '-')) + " -> " +
                    (change.after.valid() ? recordRange(change.after, false) : std::string(23, '-'));
        }
        if (const CutEvent* event = sourceEvent(change))
            line += "  " + sourceName(change, *event) + " " + sourceTimecode(change, event->sourceIn);
        if (change.kind != ChangeKind::Shifted && change.kind != ChangeKind::MarkerAdded &&
            change.kind != ChangeKind::MarkerRemoved && change.amount)
            line += "  by " + std::to_string(change.amount);
        if (change.shift) line += "  shift " + signedText(change.shift);
        if (!change.from.empty() || !change.to.empty()) line += "  " + orNone(change.from) + " -> " + orNone(change.to);
        if (change.fromTrack.size()) line += "  from " + change.fromTrack;
        if (change.audioOnly) line += "  (audio only)";
        return line;
    }

    std::string cutLine(const Cut& cut, const std::string& name) const {
        std::string line = name + ": \"" + cut.name + "\"";
        if (cut.start) line += " starting " + composition::timecodeText(cut.start->frame, cut.start->fps, cut.start->drop);
        for (const CutTrack& track : cut.tracks)
            line += " " + track.label + "@" + std::to_string(track.editRate.numerator) +
                    (track.editRate.denominator == 1 ? "" : "/" + std::to_string(track.editRate.denominator));
        return line;
    }

    std::string recordTimecode(const Change& change) const {
        if (change.after.valid()) return recordAt(change.after, false, eventOf(change.after, false).recordIn);
        if (change.before.valid()) return recordAt(change.before, true, eventOf(change.before, true).recordIn);
        const CutTrack* track = inputs_.before.find(change.track);
        return track ? beforeClock_.record(*track, change.position) : "";
    }

    // A conform range with the new times in the new cut's own edit units.
    Json conformJson(const ConformRange& range) const {
        const CutTrack* from = inputs_.before.find(range.fromTrack);
        const CutTrack* to = inputs_.after.find(range.track);
        const auto own = [&](int64_t value) {
            return from && to ? composition::convertEditUnits(value, from->editRate, to->editRate) : value;
        };
        return {{"fromTrack", range.fromTrack}, {"track", range.track},     {"oldIn", range.oldIn},
                {"oldOut", range.oldOut},       {"newIn", own(range.newIn)}, {"newOut", own(range.newOut)}};
    }

private:
    const CutTrack& trackOf(const EventAt& at, bool old) const {
        return (old ? inputs_.before : inputs_.after).tracks[at.track];
    }
    const CutEvent& eventOf(const EventAt& at, bool old) const { return trackOf(at, old).events[at.event]; }

    const CutEvent* sourceEvent(const Change& change) const {
        if (change.after.valid()) return &eventOf(change.after, false);
        if (change.before.valid()) return &eventOf(change.before, true);
        return nullptr;
    }

    const std::string& sourceName(const Change& change, const CutEvent& event) const {
        return (change.after.valid() ? inputs_.after : inputs_.before).sources[event.source].name;
    }

    std::string sourceTimecode(const Change& change, int64_t position) const {
        return change.after.valid() ? afterClock_.source(trackOf(change.after, false), position)
                                    : beforeClock_.source(trackOf(change.before, true), position);
    }

    // The record timecode of `position` on the track of the event at `at`.
    std::string recordAt(const EventAt& at, bool old, int64_t position) const {
        return (old ? beforeClock_ : afterClock_).record(trackOf(at, old), position);
    }

    Json eventTimes(const EventAt& at, bool old) const {
        const CutEvent& event = eventOf(at, old);
        return {{"recordIn", event.recordIn},
                {"recordOut", event.recordOut},
                {"timecodeIn", recordAt(at, old, event.recordIn)},
                {"timecodeOut", recordAt(at, old, event.recordOut)}};
    }

    std::string recordRange(const EventAt& at, bool old) const {
        const CutEvent& event = eventOf(at, old);
        return recordAt(at, old, event.recordIn) + "-" + recordAt(at, old, event.recordOut);
    }

    // "" when the marker's track is not in its cut.
    std::string markerTimecode(const CutMarker& marker, bool old) const {
        const CutTrack* track = (old ? inputs_.before : inputs_.after).find(marker.track);
        return track ? (old ? beforeClock_ : afterClock_).record(*track, marker.position) : std::string();
    }

    Json markerJson(const CutMarker& marker, bool old) const {
        Json json = {{"text", marker.text}, {"track", marker.track}, {"position", marker.position}};
        if (const std::string timecode = markerTimecode(marker, old); !timecode.empty()) json["timecode"] = timecode;
        if (!marker.colour.empty()) json["colour"] = marker.colour;
        return json;
    }

    // A marker's record timecode, in a column as wide as a record range; dashes for none.
    std::string markerAt(size_t marker, bool old) const {
        std::string text = marker == kNone ? std::string(11, '-')
                                           : markerTimecode((old ? inputs_.before : inputs_.after).markers[marker], old);
        text.resize(23, ' ');
        return text;
    }

    const std::string& markerText(const Change& change) const {
        return change.newMarker != kNone ? inputs_.after.markers[change.newMarker].text
                                         : inputs_.before.markers[change.marker].text;
    }

    static std::string signedText(int64_t value) { return (value > 0 ? "+" : "") + std::to_string(value); }
    static std::string orNone(const std::string& text) { return text.empty() ? "none" : text; }

    const DiffInputs& inputs_;
    Clock beforeClock_, afterClock_;
};

// The changes of the whole cut (its start), then of each track in the diff's order.
struct ChangesByTrack {
    std::vector<const Change*> cut;
    std::vector<std::vector<const Change*>> tracks;
};

ChangesByTrack changesByTrack(const CutDiff& diff) {
    ChangesByTrack grouped;
    grouped.tracks.resize(diff.tracks.size());
    std::unordered_map<std::string, size_t> index;
    for (size_t i = 0; i < diff.tracks.size(); ++i) index[diff.tracks[i]] = i;
    for (const Change& change : diff.changes) {
        const auto found = index.find(change.track);
        (found == index.end() ? grouped.cut : grouped.tracks[found->second]).push_back(&change);
    }
    return grouped;
}

// Where a run of events on one track only rippled by the same amount ends: three or more are
// said once.
size_t shiftedRunEnd(const std::vector<const Change*>& changes, size_t first) {
    size_t end = first + 1;
    if (changes[first]->kind == ChangeKind::Shifted)
        while (end < changes.size() && changes[end]->kind == ChangeKind::Shifted &&
               changes[end]->shift == changes[first]->shift && changes[end]->track == changes[first]->track)
            ++end;
    return end - first > 2 ? end : first + 1;
}

template <typename Line>
void printCollapsed(const std::vector<const Change*>& changes, const Report& report, std::ostream& out, Line line) {
    for (size_t i = 0; i < changes.size();) {
        const size_t end = shiftedRunEnd(changes, i);
        if (end - i > 1)
            out << "  shifted " << end - i << " events from " << report.recordTimecode(*changes[i]) << " to "
                << report.recordTimecode(*changes[end - 1]) << "  shift " << changes[i]->shift << "\n";
        else
            out << "  " << line(*changes[i]) << "\n";
        i = end;
    }
}

// The same edit at the same place on several tracks, as one: class, place, amount and the tracks.
struct WholeCutEdit {
    const Change* first;
    std::vector<std::string> tracks;
};

// Ripples are left to the tracks' lists: the whole cut lists the edits.
std::vector<WholeCutEdit> wholeCut(const CutDiff& diff) {
    std::vector<WholeCutEdit> edits;
    std::map<std::tuple<int, int64_t, int64_t, int64_t, std::string, std::string>, size_t> seen;
    for (const Change& change : diff.changes) {
        if (change.kind == ChangeKind::Shifted) continue;
        const auto key = std::make_tuple(int(change.kind), change.position, change.amount, change.shift, change.from,
                                         change.to);
        const auto [found, added] = seen.emplace(key, edits.size());
        if (added) edits.push_back({&change, {}});
        if (!change.track.empty()) edits[found->second].tracks.push_back(change.track);
    }
    std::stable_sort(edits.begin(), edits.end(),
                     [](const WholeCutEdit& a, const WholeCutEdit& b) { return a.first->position < b.first->position; });
    return edits;
}

std::string joined(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) text += (text.empty() ? "" : " ") + item;
    return text;
}

std::map<std::string, size_t> counts(const CutDiff& diff) {
    std::map<std::string, size_t> counted;
    for (const Change& change : diff.changes) ++counted[changeKindName(change.kind)];
    return counted;
}

}  // namespace

void printDiff(const DiffInputs& inputs, const CutDiff& diff, std::ostream& out) {
    const Report report(inputs);
    out << report.cutLine(inputs.before, "old " + inputs.beforeName) << "\n"
        << report.cutLine(inputs.after, "new " + inputs.afterName) << "\n";
    if (diff.comparedInTime) out << "the cuts' edit rates differ: compared in time, amounts in the old cut's units\n";
    if (diff.changes.empty()) {
        out << "no changes\n";
        return;
    }
    const ChangesByTrack grouped = changesByTrack(diff);
    const auto line = [&](const Change& c) { return report.changeLine(c); };
    if (!grouped.cut.empty()) printCollapsed(grouped.cut, report, out << "\ncut\n", line);
    for (size_t t = 0; t < diff.tracks.size(); ++t) {
        const std::vector<const Change*>& onTrack = grouped.tracks[t];
        out << "\n" << diff.tracks[t] << ": "
            << (onTrack.empty() ? "no changes" : std::to_string(onTrack.size()) + " changes") << "\n";
        printCollapsed(onTrack, report, out, line);
    }
    out << "\nwhole cut\n";
    std::vector<const Change*> edits;
    std::map<const Change*, std::string> tracksOf;
    for (const WholeCutEdit& edit : wholeCut(diff)) {
        edits.push_back(edit.first);
        tracksOf[edit.first] = joined(edit.tracks);
    }
    printCollapsed(edits, report, out, [&](const Change& c) {
        return (tracksOf[&c].empty() ? "" : tracksOf[&c] + "  ") + report.changeLine(c);
    });
    out << "\n" << diff.changes.size() << (diff.changes.size() == 1 ? " change:" : " changes:");
    const char* separator = " ";
    for (const auto& [name, count] : counts(diff)) {
        out << separator << count << " " << name;
        separator = ", ";
    }
    out << "\n";
}

// A cut's file, name, start and each track's edit rate: the units of its record times.
Json cutJson(const Cut& cut, const std::string& file) {
    Json rates = Json::object();
    for (const CutTrack& track : cut.tracks) rates[track.label] = {track.editRate.numerator, track.editRate.denominator};
    Json json = {{"file", file}, {"name", cut.name}, {"editRates", std::move(rates)}};
    if (cut.start) json["start"] = composition::timecodeText(cut.start->frame, cut.start->fps, cut.start->drop);
    return json;
}

Json diffJson(const DiffInputs& inputs, const CutDiff& diff) {
    const Report report(inputs);
    Json json = {{"aafbridgeDiff", 1},
                 {"old", cutJson(inputs.before, inputs.beforeName)},
                 {"new", cutJson(inputs.after, inputs.afterName)},
                 {"comparedInTime", diff.comparedInTime},
                 {"identical", diff.changes.empty()}};
    Json tracks = Json::array();
    const ChangesByTrack grouped = changesByTrack(diff);
    for (size_t t = 0; t < diff.tracks.size(); ++t) {
        const std::vector<const Change*>& onTrack = grouped.tracks[t];
        Json changes = Json::array();
        for (size_t i = 0; i < onTrack.size();) {
            const size_t end = shiftedRunEnd(onTrack, i);
            changes.push_back(end - i > 1 ? report.runJson(*onTrack[i], *onTrack[end - 1], end - i)
                                          : report.changeJson(*onTrack[i]));
            i = end;
        }
        tracks.push_back({{"track", diff.tracks[t]}, {"changes", std::move(changes)}});
    }
    json["tracks"] = std::move(tracks);
    Json whole = Json::array();
    for (const WholeCutEdit& edit : wholeCut(diff)) {
        Json entry = report.changeJson(*edit.first);
        entry.erase("track");
        entry["tracks"] = edit.tracks;
        whole.push_back(std::move(entry));
    }
    json["wholeCut"] = std::move(whole);
    Json conform = Json::array();
    for (const ConformRange& range : diff.conform) conform.push_back(report.conformJson(range));
    json["conformMap"] = std::move(conform);
    json["summary"] = counts(diff);
    return json;
}

}  // namespace cutdiff
