#include "otio/otio_flat.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using Kind = FlatEntry::Kind;

// Hands out the parts of entries laid end to end between two times, each call's range after
// the last one's, so that laying a layer over another is linear in their entries.
class EntryCursor {
public:
    explicit EntryCursor(const std::vector<FlatEntry>& entries) : entries_(entries) {}

    // Transitions exactly at `from` or `to` are included: their neighbours are checked later.
    void take(double from, double to, std::vector<FlatEntry>& out) {
        while (next_ < entries_.size() && position_ + entries_[next_].duration < from)
            position_ += entries_[next_++].duration;
        double start = position_;
        for (size_t i = next_; i < entries_.size(); start += entries_[i++].duration) {
            const FlatEntry& entry = entries_[i];
            if (start > to || (start == to && entry.kind != Kind::transition)) break;
            if (entry.kind == Kind::transition) {
                if (start >= from) out.push_back(entry);
                continue;
            }
            const double head = std::max(start, from), tail = std::min(start + entry.duration, to);
            if (tail <= head) continue;
            FlatEntry& part = out.emplace_back(entry);
            if (part.kind == Kind::clip) part.start += (head - start) * part.speed;
            part.duration = tail - head;
        }
    }

private:
    const std::vector<FlatEntry>& entries_;
    size_t next_ = 0;
    double position_ = 0;
};

// Whether `next` goes on where `entry` ends: gaps, or the same media played on.
bool continues(const FlatEntry& entry, const FlatEntry& next) {
    if (entry.kind != next.kind || entry.kind == Kind::transition || entry.node.index() != next.node.index()) return false;
    if (entry.kind == Kind::gap) return true;
    return entry.media.path == next.media.path && entry.media.name == next.media.name && entry.speed == next.speed &&
           entry.effects == next.effects && std::fabs(entry.start + entry.duration * entry.speed - next.start) < 1e-9;
}

// A clip that shows through several gaps of the layer above in a row is one cut.
void joinContinuing(std::vector<FlatEntry>& entries) {
    std::vector<FlatEntry> joined;
    joined.reserve(entries.size());
    for (FlatEntry& entry : entries) {
        if (!joined.empty() && continues(joined.back(), entry))
            joined.back().duration += entry.duration;
        else
            joined.push_back(std::move(entry));
    }
    entries = std::move(joined);
}

}  // namespace

void FlatItems::append(FlatItems other) {
    for (FlatMarker& marker : other.markers) markers.push_back({marker.at + length, std::move(marker.text)});
    for (FlatEntry& entry : other.entries) entries.push_back(std::move(entry));
    length += other.length;
}

FlatItems cropFlatItems(const FlatItems& items, double from, double to, const OtioNode& filler) {
    FlatItems cropped;
    EntryCursor(items.entries).take(from, to, cropped.entries);
    cropped.length = to - from;
    if (items.length < to) {
        FlatEntry& gap = cropped.entries.emplace_back(Kind::gap, filler);
        gap.duration = to - std::max(from, items.length);
    }
    for (const FlatMarker& marker : items.markers)
        if (marker.at >= from && marker.at <= to) cropped.markers.push_back({marker.at - from, marker.text});
    return cropped;
}

void warpFlatItems(FlatItems& items, double speed) {
    for (FlatEntry& entry : items.entries) {
        entry.duration /= speed;
        entry.in /= speed;
        entry.out /= speed;
        entry.speed *= speed;
    }
    for (FlatMarker& marker : items.markers) marker.at /= speed;
    items.length /= speed;
}

FlatItems overlayFlatItems(const FlatItems& lower, FlatItems upper) {
    FlatItems shown;
    EntryCursor below(lower.entries);
    double position = 0;
    for (FlatEntry& entry : upper.entries) {
        const double end = position + entry.duration;
        if (entry.kind != Kind::gap) {
            shown.entries.push_back(std::move(entry));
        } else {
            if (position < lower.length) below.take(position, std::min(end, lower.length), shown.entries);
            if (end > lower.length) {
                FlatEntry& rest = shown.entries.emplace_back(Kind::gap, entry.node);
                rest.duration = end - std::max(position, lower.length);
            }
        }
        position = end;
    }
    if (lower.length > position) below.take(position, lower.length, shown.entries);
    joinContinuing(shown.entries);
    shown.length = std::max(lower.length, position);
    shown.markers = lower.markers;
    for (FlatMarker& marker : upper.markers) shown.markers.push_back(std::move(marker));
    return shown;
}
