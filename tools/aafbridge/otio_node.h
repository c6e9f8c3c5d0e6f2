#pragma once
// A value of an OpenTimelineIO document together with its path in the document, so that
// every refusal names the item: `tracks.children[1].children[4]: ...`. Access is checked:
// a missing member or a value of the wrong kind is refused, never read. A node refers to its
// parent and to its key, so both must outlive it; the path is put together only for a
// refusal, as building it on every step cost more than the rest of the reading.
#include <cmath>
#include <string>
#include <utility>

#include "otio_time.h"

class OtioNode {
public:
    OtioNode(const nlohmann::json& value, std::string path) : value_(value), root_(std::move(path)) {}

    const nlohmann::json& json() const { return value_; }

    std::string path() const {
        if (!parent_) return root_;
        const std::string above = parent_->path();
        if (!key_) return above + "[" + std::to_string(index_) + "]";
        return above.empty() ? key_ : above + "." + key_;
    }

    [[noreturn]] void refuse(const std::string& why) const {
        const std::string where = path();
        throw OtioRefusal((where.empty() ? std::string("document") : where) + ": " + why);
    }

    // Present and not null.
    bool has(const char* key) const {
        auto found = object().find(key);
        return found != value_.end() && !found->is_null();
    }

    OtioNode operator[](const char* key) const {
        auto found = object().find(key);
        if (found == value_.end()) refuse(std::string("missing \"") + key + "\"");
        return OtioNode(*found, this, key, 0);
    }

    // The element at `index` of an array, which must be below size().
    OtioNode at(size_t index) const { return OtioNode(value_[index], this, nullptr, index); }

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
        const OtioNode value = (*this)[key];
        if (!value.value_.is_boolean()) value.refuse("expected true or false");
        return value.value_.get<bool>();
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

    OtioNode(const nlohmann::json& value, const OtioNode* parent, const char* key, size_t index)
        : value_(value), parent_(parent), key_(key), index_(index) {}

    const nlohmann::json& value_;
    const OtioNode* parent_ = nullptr;
    std::string root_;
    const char* key_ = nullptr;  // null for an array element
    size_t index_ = 0;
};
