#pragma once
// What `write` changed to make an OpenTimelineIO timeline into a file the writer can express:
// one line per item (its path, what was done, by how much) and a summary. With --strict the
// first change needed is refused instead, with the same path.
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "otio/otio_node.h"

class OtioNotes {
public:
    enum class Change { flattened, rounded, dropped, changed };

    explicit OtioNotes(bool strict) : strict_(strict) {}
    bool strict() const { return strict_; }

    // `problem` says what the writer cannot take as it stands, `done` what was done about it.
    void change(const OtioNode& item, Change kind, const std::string& problem, const std::string& done);
    // A time of the item moved to the nearest edit unit, by `error` units later (at `rate` per second).
    void rounded(const OtioNode& item, double error, double rate);

    void written(size_t items) { written_ = items; }

    const std::vector<std::string>& lines() const { return lines_; }
    // Items written; flattened, rounded with the largest error, dropped, otherwise changed.
    std::string summary() const;

private:
    bool strict_;
    std::vector<std::string> lines_;
    size_t written_ = 0, flattened_ = 0, rounded_ = 0, dropped_ = 0, changed_ = 0;
    double largestError_ = 0, largestErrorSeconds_ = 0;
};

// The rounding errors of a track's entries, one note per item: consecutive entries that come
// from one nest are that nest's.
class RoundingNotes {
public:
    RoundingNotes(OtioNotes& notes, double rate) : notes_(notes), rate_(rate) {}
    // How far times of `item` moved, rounded to edit units: the rounded less the exact.
    void add(const OtioNode& item, std::initializer_list<double> errors);
    void flush();

private:
    OtioNotes& notes_;
    double rate_;
    std::optional<OtioNode> pending_;
    double error_ = 0;
};
