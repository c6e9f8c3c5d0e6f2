#pragma once
// A JSON document kept flat for reading: every value is one entry of a single array, the
// children of each array or object are listed together, text values sit in one buffer and
// each distinct member name is kept once.
// nlohmann-json's tree gives every value and every object member allocations of their own;
// for a large OpenTimelineIO document, building and freeing that tree cost more than
// reading it. Values are named by their index; kAbsent stands for a value that is not there,
// and every accessor takes it, so lookups can be chained without checks in between.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class FlatJson {
public:
    using Index = uint32_t;
    static constexpr Index kAbsent = UINT32_MAX;
    enum class Kind : uint8_t { absent, null, boolean, integer, whole, real, text, array, object };

    // Through nlohmann-json's SAX parser: a syntax error is a DescriptionError giving the line
    // and column, as for every JSON input of the tool.
    static FlatJson parse(const std::string& text);

    Index root() const { return entries_.empty() ? kAbsent : 0; }
    Kind kind(Index value) const { return value < entries_.size() ? entries_[value].kind : Kind::absent; }
    bool isNumber(Index value) const;
    // Children of an array or object; 0 for any other value.
    size_t size(Index container) const;
    // The array's element, kAbsent past the end or when `array` is no array.
    Index element(Index array, size_t position) const;
    // The object's member (the last one of that name), kAbsent when there is none.
    Index member(Index object, std::string_view key) const;
    // Numbers as doubles, booleans and text as they are; the value must be of that kind.
    double number(Index value) const;
    bool boolean(Index value) const { return entries_[value].scalar.flag; }
    std::string_view text(Index value) const { return view(entries_[value].first, entries_[value].count); }
    // The value as JSON text for a message; arrays and objects by their kind alone.
    std::string shown(Index value) const;

private:
    friend class FlatJsonBuilder;
    struct Entry {
        Kind kind = Kind::null;
        uint32_t key = 0;               // a member's name, in keys_
        uint32_t first = 0, count = 0;  // containers: their children in children_; text: its place in text_
        union {
            bool flag;
            int64_t integer;
            uint64_t whole;
            double real;
        } scalar = {};
    };

    std::string_view view(uint32_t offset, uint32_t length) const { return std::string_view(text_).substr(offset, length); }

    std::vector<Entry> entries_;
    std::vector<Index> children_;
    std::string text_;
    std::vector<std::string> keys_;
};
