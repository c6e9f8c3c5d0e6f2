#include "otio/otio_notes.h"

#include <cmath>
#include <cstdio>

namespace {

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%+.*f", decimals, value);
    return text;
}

std::string path(const OtioNode& item) {
    const std::string where = item.path();
    return where.empty() ? "document" : where;
}

}  // namespace

void OtioNotes::change(const OtioNode& item, Change kind, const std::string& problem, const std::string& done) {
    if (strict_) item.refuse(problem);
    lines_.push_back(path(item) + ": " + problem + ": " + done);
    switch (kind) {
    case Change::flattened: ++flattened_; break;
    case Change::rounded: ++rounded_; break;
    case Change::dropped: ++dropped_; break;
    case Change::changed: ++changed_; break;
    }
}

void OtioNotes::rounded(const OtioNode& item, double error, double rate) {
    const double seconds = error / rate;
    if (std::fabs(error) > std::fabs(largestError_)) {
        largestError_ = error;
        largestErrorSeconds_ = seconds;
    }
    change(item, Change::rounded, "times off the composition's edit units",
           "rounded to the nearest, the largest cut by " + fixed(error, 4) + " edit units (" +
               fixed(seconds * 1000, 3) + " ms)");
}

std::string OtioNotes::summary() const {
    std::string text = std::to_string(written_) + " items written; " + std::to_string(flattened_) + " nests flattened, " +
                       std::to_string(rounded_) + " items rounded";
    if (rounded_)
        text += " (largest error " + fixed(largestError_, 4) + " edit units, " + fixed(largestErrorSeconds_ * 1000, 3) +
                " ms)";
    return text + ", " + std::to_string(dropped_) + " dropped, " + std::to_string(changed_) + " otherwise changed";
}

void RoundingNotes::add(const OtioNode& item, std::initializer_list<double> errors) {
    double largest = 0;
    for (const double error : errors)
        if (std::fabs(error) > std::fabs(largest)) largest = error;
    if (std::fabs(largest) <= 1e-6) return;
    if (pending_ && pending_->index() == item.index()) {
        if (std::fabs(largest) > std::fabs(error_)) error_ = largest;
        return;
    }
    flush();
    pending_.emplace(item);
    error_ = largest;
}

void RoundingNotes::flush() {
    if (pending_) notes_.rounded(*pending_, error_, rate_);
    pending_.reset();
}
