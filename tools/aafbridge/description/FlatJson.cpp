#include "description/FlatJson.h"

#include <limits>
#include <unordered_map>
#include <nlohmann/json.hpp>

#include "description/DescriptionError.h"
#include "description/JsonText.h"

using Json = nlohmann::json;

// Fills a FlatJson from the parser's events. A container's children gather on a stack of
// indices while it is open and move to the document's child list when it closes, so the
// children of one container end up next to each other.
class FlatJsonBuilder : public SyntaxPlace {
public:
    explicit FlatJsonBuilder(FlatJson& document) : document_(document) {}

    bool null() {
        add(FlatJson::Kind::null);
        return true;
    }
    bool boolean(bool value) {
        add(FlatJson::Kind::boolean).scalar.flag = value;
        return true;
    }
    bool number_integer(Json::number_integer_t value) {
        add(FlatJson::Kind::integer).scalar.integer = value;
        return true;
    }
    bool number_unsigned(Json::number_unsigned_t value) {
        add(FlatJson::Kind::whole).scalar.whole = value;
        return true;
    }
    bool number_float(Json::number_float_t value, const std::string&) {
        add(FlatJson::Kind::real).scalar.real = value;
        return true;
    }
    bool string(std::string& value) {
        FlatJson::Entry& entry = add(FlatJson::Kind::text);
        entry.first = keep(value);
        entry.count = uint32_t(value.size());
        return true;
    }
    bool binary(Json::binary_t&) { return false; }  // never produced from JSON text

    // Objects of one kind give their members in the same order, so the name that followed
    // the previous name last time is tried before the table.
    bool key(std::string& value) {
        std::vector<std::string>& names = document_.keys_;
        const uint32_t guess = key_ < following_.size() ? following_[key_] : FlatJson::kAbsent;
        if (guess != FlatJson::kAbsent && names[guess] == value) {
            key_ = guess;
            return true;
        }
        auto found = keys_.try_emplace(value, uint32_t(names.size()));
        if (found.second) {
            names.push_back(value);
            following_.push_back(FlatJson::kAbsent);
        }
        if (key_ < following_.size()) following_[key_] = found.first->second;
        key_ = found.first->second;
        return true;
    }
    bool start_object(std::size_t) { return open(FlatJson::Kind::object); }
    bool start_array(std::size_t) { return open(FlatJson::Kind::array); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

private:
    FlatJson::Entry& add(FlatJson::Kind kind) {
        auto& entries = document_.entries_;
        if (entries.size() >= FlatJson::kAbsent) throw DescriptionError("the document has too many values");
        if (!open_.empty()) pending_.push_back(FlatJson::Index(entries.size()));
        FlatJson::Entry& entry = entries.emplace_back();
        entry.kind = kind;
        if (!open_.empty() && document_.entries_[open_.back().container].kind == FlatJson::Kind::object) entry.key = key_;
        return entry;
    }

    bool open(FlatJson::Kind kind) {
        add(kind);
        open_.push_back({FlatJson::Index(document_.entries_.size() - 1), pending_.size()});
        return true;
    }

    bool close() {
        const Open container = open_.back();
        open_.pop_back();
        FlatJson::Entry& entry = document_.entries_[container.container];
        entry.first = uint32_t(document_.children_.size());
        entry.count = uint32_t(pending_.size() - container.firstPending);
        document_.children_.insert(document_.children_.end(), pending_.begin() + std::ptrdiff_t(container.firstPending),
                                   pending_.end());
        pending_.resize(container.firstPending);
        return true;
    }

    uint32_t keep(const std::string& value) {
        std::string& text = document_.text_;
        if (value.size() > std::numeric_limits<uint32_t>::max() - text.size())
            throw DescriptionError("the document holds too much text");
        const auto offset = uint32_t(text.size());
        text += value;
        return offset;
    }

    struct Open {
        FlatJson::Index container;
        size_t firstPending;
    };

    FlatJson& document_;
    std::vector<Open> open_;
    std::vector<FlatJson::Index> pending_;
    std::unordered_map<std::string, uint32_t> keys_;  // member names by their number
    std::vector<uint32_t> following_;                 // by name: the name that came after it last
    uint32_t key_ = 0;                                // the name of the member that comes next
};

FlatJson FlatJson::parse(const std::string& text) {
    FlatJson document;
    // A value takes ten to twenty characters of OpenTimelineIO text; space reserved and never
    // used costs nothing, moving the values to a larger array each time it fills does.
    document.entries_.reserve(text.size() / 10);
    FlatJsonBuilder builder(document);
    parseJsonText(text, builder);
    return document;
}

bool FlatJson::isNumber(Index value) const {
    const Kind k = kind(value);
    return k == Kind::integer || k == Kind::whole || k == Kind::real;
}

size_t FlatJson::size(Index container) const {
    const Kind k = kind(container);
    return k == Kind::array || k == Kind::object ? entries_[container].count : 0;
}

FlatJson::Index FlatJson::element(Index array, size_t position) const {
    if (kind(array) != Kind::array || position >= entries_[array].count) return kAbsent;
    return children_[entries_[array].first + position];
}

FlatJson::Index FlatJson::member(Index object, std::string_view key) const {
    if (kind(object) != Kind::object) return kAbsent;
    const Entry& entry = entries_[object];
    for (uint32_t i = entry.count; i-- > 0;) {
        const Index child = children_[entry.first + i];
        if (keys_[entries_[child].key] == key) return child;
    }
    return kAbsent;
}

double FlatJson::number(Index value) const {
    const Entry& entry = entries_[value];
    if (entry.kind == Kind::integer) return double(entry.scalar.integer);
    if (entry.kind == Kind::whole) return double(entry.scalar.whole);
    return entry.scalar.real;
}

std::string FlatJson::shown(Index value) const {
    switch (kind(value)) {
        case Kind::absent: return "nothing";
        case Kind::null: return "null";
        case Kind::boolean: return boolean(value) ? "true" : "false";
        case Kind::integer: return Json(entries_[value].scalar.integer).dump();
        case Kind::whole: return Json(entries_[value].scalar.whole).dump();
        case Kind::real: return Json(entries_[value].scalar.real).dump();
        case Kind::text: return Json(std::string(text(value))).dump(-1, ' ', false, Json::error_handler_t::replace);
        case Kind::array: return "an array";
        case Kind::object: return "an object";
    }
    return "";
}
