#pragma once
// A value of an OpenTimelineIO document together with its path in the document, so that
// every refusal names the item: `tracks.children[1].children[4]: ...`. Access is checked:
// a missing member or a value of the wrong kind is refused, never read. A node refers to its
// document, its parent and its key, so all three must outlive it; the path is put together
// only for a refusal, as building it on every step cost more than the rest of the reading.
// A node kept beyond its parent's life is detached first: it holds its path itself.
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "description/FlatJson.h"
#include "otio/otio_time.h"

class OtioNode {
public:
    OtioNode(const FlatJson& document, FlatJson::Index value) : document_(document), value_(value) {}

    const FlatJson& document() const { return document_; }
    FlatJson::Index index() const { return value_; }

    std::string path() const {
        if (!parent_) return detachedPath_ ? *detachedPath_ : "";
        const std::string above = parent_->path();
        if (!key_) return above + "[" + std::to_string(position_) + "]";
        return above.empty() ? key_ : above + "." + key_;
    }

    // The same value, independent of its parent's life.
    OtioNode detached() const {
        OtioNode node(document_, value_);
        node.detachedPath_ = std::make_shared<const std::string>(path());
        return node;
    }

    [[noreturn]] void refuse(const std::string& why) const {
        const std::string where = path();
        throw OtioRefusal((where.empty() ? std::string("document") : where) + ": " + why);
    }

    // Present and not null.
    bool has(const char* key) const { return present(key) != FlatJson::kAbsent; }

    OtioNode operator[](const char* key) const {
        const FlatJson::Index found = object().member(key);
        if (found == FlatJson::kAbsent) refuse(std::string("missing \"") + key + "\"");
        return child(found, key);
    }

    // The element at `position` of an array, which must be below size().
    OtioNode at(size_t position) const {
        return OtioNode(document_, document_.element(value_, position), this, nullptr, position);
    }

    size_t size() const {
        if (document_.kind(value_) != FlatJson::Kind::array) refuse("expected an array, not " + shown());
        return document_.size(value_);
    }

    // An array that may be absent or null: its size, 0 then.
    size_t count(const char* key) const {
        const FlatJson::Index found = present(key);
        return found == FlatJson::kAbsent ? 0 : child(found, key).size();
    }

    double number() const {
        if (!document_.isNumber(value_)) refuse("expected a number, not " + shown());
        const double value = document_.number(value_);
        if (!std::isfinite(value)) refuse("not a finite number");
        return value;
    }

    std::string text() const {
        if (document_.kind(value_) != FlatJson::Kind::text) refuse("expected a string, not " + shown());
        return std::string(document_.text(value_));
    }

    std::string text(const char* key, const std::string& fallback) const {
        const FlatJson::Index found = present(key);
        return found == FlatJson::kAbsent ? fallback : child(found, key).text();
    }

    bool flag(const char* key, bool fallback) const {
        const FlatJson::Index found = present(key);
        if (found == FlatJson::kAbsent) return fallback;
        if (document_.kind(found) != FlatJson::Kind::boolean) child(found, key).refuse("expected true or false");
        return document_.boolean(found);
    }

    // The schema's name without its version: "Clip" for "Clip.2".
    std::string schema() const {
        const std::string schema = (*this)["OTIO_SCHEMA"].text();
        return schema.substr(0, schema.find('.'));
    }

    // The value as a message shows it.
    std::string shown() const {
        const std::string text = document_.shown(value_);
        return text.size() > 40 ? text.substr(0, 40) + "..." : text;
    }

private:
    // This node, checked to be an object.
    const OtioNode& object() const {
        if (document_.kind(value_) != FlatJson::Kind::object) refuse("expected an object, not " + shown());
        return *this;
    }
    FlatJson::Index member(const char* key) const { return document_.member(value_, key); }

    // The member, kAbsent when it is missing or null.
    FlatJson::Index present(const char* key) const {
        const FlatJson::Index found = object().member(key);
        return document_.kind(found) == FlatJson::Kind::null ? FlatJson::kAbsent : found;
    }

    OtioNode child(FlatJson::Index value, const char* key) const { return OtioNode(document_, value, this, key, 0); }

    OtioNode(const FlatJson& document, FlatJson::Index value, const OtioNode* parent, const char* key, size_t position)
        : document_(document), value_(value), parent_(parent), key_(key), position_(position) {}

    const FlatJson& document_;
    FlatJson::Index value_;
    const OtioNode* parent_ = nullptr;
    const char* key_ = nullptr;  // null for an array element
    size_t position_ = 0;
    std::shared_ptr<const std::string> detachedPath_;  // of a detached node
};
