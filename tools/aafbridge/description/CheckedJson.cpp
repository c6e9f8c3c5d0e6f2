#include "description/CheckedJson.h"

#include <cmath>
#include <limits>

#include "description/DescriptionError.h"

const IntegerRange kLength = {0, std::numeric_limits<int64_t>::max(), "a length"};
const IntegerRange kEditUnit = {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(),
                                "a 64-bit integer"};
const IntegerRange kUnsigned32 = {0, std::numeric_limits<uint32_t>::max(), "an unsigned 32-bit integer"};
const IntegerRange kRatePart = {1, std::numeric_limits<int32_t>::max(), "a rate part (1 to 2147483647)"};
const IntegerRange kTrackNumber = {1, std::numeric_limits<uint32_t>::max(), "a track number"};
const IntegerRange kChannelCount = {1, 255, "a channel count (1 to 255)"};
const IntegerRange kSampleSize = {1, 255, "a sample size (1 to 255 bits)"};
const IntegerRange kSampleRate = {1, std::numeric_limits<int32_t>::max(), "a sample rate (1 to 2147483647 Hz)"};

namespace {

// The value as the error shows it: containers by kind, so a message never dumps a tree.
std::string shown(const Json& value) {
    if (value.is_object()) return "an object";
    if (value.is_array()) return "an array";
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

[[noreturn]] void reject(const Json& value, const std::string& where, const std::string& expected) {
    throw DescriptionError(where + ": " + shown(value) + " is not " + expected);
}

// A JSON number that is a whole value in the 64-bit range, as int64_t; false otherwise.
bool wholeValue(const Json& value, int64_t& out) {
    if (value.is_number_unsigned()) {
        const auto unsignedValue = value.get<uint64_t>();
        if (unsignedValue > uint64_t(std::numeric_limits<int64_t>::max())) return false;
        out = int64_t(unsignedValue);
        return true;
    }
    if (value.is_number_integer()) {
        out = value.get<int64_t>();
        return true;
    }
    if (!value.is_number_float()) return false;
    const double d = value.get<double>();
    // 25.0 is 25; 1.5, 1e300 and the ends past 2^63 are not 64-bit integers.
    if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0) || d != std::trunc(d)) return false;
    out = int64_t(d);
    return true;
}

}  // namespace

std::string item(const std::string& where, const char* key, size_t index) {
    return member(where, key) + "[" + std::to_string(index) + "]";
}

std::string member(const std::string& where, const char* key) { return where.empty() ? key : where + "." + key; }

const Json& required(const Json& object, const char* key, const std::string& where) {
    if (!object.is_object()) reject(object, where.empty() ? "description" : where, "an object");
    auto found = object.find(key);
    if (found == object.end()) throw DescriptionError((where.empty() ? "description" : where) + ": missing \"" + key + "\"");
    return *found;
}

bool present(const Json& object, const char* key, const std::string& where) {
    if (!object.is_object()) reject(object, where.empty() ? "description" : where, "an object");
    return object.contains(key) && !object[key].is_null();
}

const Json& list(const Json& object, const char* key, const std::string& where) {
    static const Json kEmpty = Json::array();
    if (!present(object, key, where)) return kEmpty;
    const Json& value = object[key];
    if (!value.is_array()) reject(value, member(where, key), "an array");
    return value;
}

int64_t integer(const Json& value, const IntegerRange& range, const std::string& where) {
    int64_t whole = 0;
    if (!wholeValue(value, whole) || whole < range.lowest || whole > range.highest) reject(value, where, range.noun);
    return whole;
}

int64_t integer(const Json& object, const char* key, const IntegerRange& range, const std::string& where) {
    return integer(required(object, key, where), range, member(where, key));
}

int64_t integer(const Json& object, const char* key, const IntegerRange& range, const std::string& where,
                int64_t fallback) {
    return present(object, key, where) ? integer(object, key, range, where) : fallback;
}

std::string text(const Json& object, const char* key, const std::string& where) {
    const Json& value = required(object, key, where);
    if (!value.is_string()) reject(value, member(where, key), "a text");
    return value.get<std::string>();
}

bool flag(const Json& object, const char* key, const std::string& where, bool fallback) {
    if (!present(object, key, where)) return fallback;
    const Json& value = object[key];
    if (!value.is_boolean()) reject(value, member(where, key), "true or false");
    return value.get<bool>();
}

double number(const Json& value, const std::string& where, bool positive) {
    if (!value.is_number()) reject(value, where, positive ? "a positive number" : "a number");
    const double d = value.get<double>();
    if (!std::isfinite(d) || (positive && !(d > 0))) reject(value, where, positive ? "a positive number" : "a number");
    return d;
}

std::vector<double> numbers(const Json& object, const char* key, const std::string& where) {
    const Json& values = list(object, key, where);
    std::vector<double> out;
    out.reserve(values.size());
    for (size_t i = 0; i < values.size(); ++i) out.push_back(number(values[i], item(where, key, i), false));
    return out;
}

Rate rate(const Json& object, const char* key, const std::string& where) {
    const Json& value = required(object, key, where);
    const std::string path = member(where, key);
    if (!value.is_array() || value.size() != 2) reject(value, path, "[numerator, denominator]");
    return {uint32_t(integer(value[0], kRatePart, path + "[0]")), uint32_t(integer(value[1], kRatePart, path + "[1]"))};
}
