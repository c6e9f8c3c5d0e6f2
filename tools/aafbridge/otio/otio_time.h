#pragma once
// Times and rates in OpenTimelineIO documents, and the refusal that names where a document
// went wrong.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>

struct OtioRefusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A frame rate as the writer writes it: whole rates over 1, any other as the next whole rate
// times 1000/1001 (23.976 is 24000/1001).
struct OtioRate {
    uint32_t numerator = 0, denominator = 1;
    double value() const { return double(numerator) / denominator; }
    bool operator==(const OtioRate& other) const {
        return numerator == other.numerator && denominator == other.denominator;
    }
};
// False when no such rate exists (not finite, not positive, too large).
bool otioRate(double rate, OtioRate& out);

nlohmann::ordered_json otioTime(double value, double rate);
nlohmann::ordered_json otioRange(double start, double duration, double rate);
