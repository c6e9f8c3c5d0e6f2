#pragma once
// A named value that editors hang on mobs, slots, components and markers (user comments,
// attribute lists): kept as text, with the lists a value may itself carry.
#include <string>
#include <vector>

namespace composition {

struct TaggedValue {
    std::string name;
    std::string value;  // text as stored, or the decimal form of a number
    std::vector<TaggedValue> children;
};

// What the file says about an object beyond its place in the edit.
struct Metadata {
    std::vector<TaggedValue> comments;    // UserComments
    std::vector<TaggedValue> attributes;  // Attributes and the editors' attribute lists

    bool empty() const { return comments.empty() && attributes.empty(); }
    // The first attribute or comment of that name; null when there is none.
    const TaggedValue* find(const std::string& name) const;
};

}  // namespace composition
