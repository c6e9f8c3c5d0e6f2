#pragma once
// A value of an OpenTimelineIO document together with its path in the document, so that
// every refusal names the item: `tracks.children[1].children[4]: ...`. Access is checked:
// a missing member or a value of the wrong kind is refused, never read.
#include <cmath>
#include <string>
#include <utility>

#include "otio_time.h"

class OtioNode {
public:
    OtioNode(const nlohmann::json& value, std::string path) : value_(value), path_(std::move(path)) {}

    const nlohmann::json& json() const { return value_; }

    [[noreturn]] void refuse(const std::string& why) const {
        throw OtioRefusal((path_.empty() ? std::string("document") : path_) + ": " + why);
    }

    // Present and not null.
    bool has(const char* key) const { return object().contains(key) && !value_[key].is_null(); }

    OtioNode operator[](const char* key) const {
        if (!object().contains(key)) refuse(std::string("missing \"") + key + "\"");
        return OtioNode(value_[key], path_.empty() ? key : path_ + "." + key);
    }

    // The element at `index` of an array, which must be below size().
    OtioNode at(size_t index) const {
        return OtioNode(value_[index], path_ + "[" + std::to_string(index) + "]");
    }

    size_t size() const {
        if (!value_.is_array()) refuse("expected an array");
        return value_.size();
    }

    // An array that may be absent or null: its size, 0 then.
    size_t count(const char* key) const { return has(key) ? (*this)[key].size() : 0; }

    double number() const {
        if (!value_.is_number()) refuse("expected a number, not " + shown());
        const double value = value_.get<double>();
        if (!std::isfinite(value)) refuse("not a finite number");
        return value;
    }

    std::string text() const {
        if (!value_.is_string()) refuse("expected a string, not " + shown());
        return value_.get<std::string>();
    }

    std::string text(const char* key, const std::string& fallback) const {
        return has(key) ? (*this)[key].text() : fallback;
    }

    bool flag(const char* key, bool fallback) const {
        if (!has(key)) return fallback;
        const nlohmann::json& value = value_[key];
        if (!value.is_boolean()) (*this)[key].refuse("expected true or false");
        return value.get<bool>();
    }

    // The schema's name without its version: "Clip" for "Clip.2".
    std::string schema() const {
        const std::string schema = (*this)["OTIO_SCHEMA"].text();
        return schema.substr(0, schema.find('.'));
    }

private:
    std::string shown() const {
        const std::string text = value_.dump();
        return text.size() > 40 ? text.substr(0, 40) + "..." : text;
    }

    const nlohmann::json& object() const {
        if (!value_.is_object()) refuse("expected an object, not " + shown());
        return value_;
    }

    const nlohmann::json& value_;
    std::string path_;
};
