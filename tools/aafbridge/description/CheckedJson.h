#pragma once
// Reading a JSON description with every value checked against what the writer takes.
// Each failure is a DescriptionError naming the JSON path and the value, e.g.
// "tracks[0].events[3].length: -7 is not a length".
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using Json = nlohmann::json;

// The integers a field accepts, and what the field is called when a value is not one.
struct IntegerRange {
    int64_t lowest, highest;
    const char* noun;  // "a length"
};

extern const IntegerRange kLength;        // 0 up: edit units, samples
extern const IntegerRange kEditUnit;      // positions, in-points, cut points, starts: any 64-bit value
extern const IntegerRange kUnsigned32;    // frame counts and picture sizes the writer takes as 32 bits
extern const IntegerRange kRatePart;      // a rate's numerator or denominator: 1 up to the 32-bit signed limit
extern const IntegerRange kTrackNumber;   // 1-based
extern const IntegerRange kChannelCount;  // as the sound descriptor stores it: one byte
extern const IntegerRange kSampleSize;    // bits per sample, one byte too
extern const IntegerRange kSampleRate;    // Hz, a 32-bit signed rational's numerator

std::string item(const std::string& where, const char* key, size_t index);  // where.key[index]
std::string member(const std::string& where, const char* key);            // where.key, or key at the top

const Json& required(const Json& object, const char* key, const std::string& where);
bool present(const Json& object, const char* key, const std::string& where);
// An array member; absent is empty.
const Json& list(const Json& object, const char* key, const std::string& where);

int64_t integer(const Json& value, const IntegerRange& range, const std::string& where);
int64_t integer(const Json& object, const char* key, const IntegerRange& range, const std::string& where);
int64_t integer(const Json& object, const char* key, const IntegerRange& range, const std::string& where,
                int64_t fallback);
std::string text(const Json& object, const char* key, const std::string& where);
bool flag(const Json& object, const char* key, const std::string& where, bool fallback);
// A finite number; above zero where `positive`.
double number(const Json& value, const std::string& where, bool positive);
std::vector<double> numbers(const Json& object, const char* key, const std::string& where);

struct Rate {
    uint32_t numerator, denominator;
};
// [numerator, denominator], both from 1 to the largest 32-bit signed value.
Rate rate(const Json& object, const char* key, const std::string& where);
