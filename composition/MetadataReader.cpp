#include "MetadataReader.h"

#include "ObjectText.h"
#include "aafkit/meta/Ids.h"

namespace composition {

namespace {

// Attribute lists hold lists of their own; a file that nests them without end is cut here.
constexpr int kMaxNesting = 8;

std::vector<TaggedValue> readList(const aafkit::Object& o, uint16_t pid, int depth);

TaggedValue readTaggedValue(const aafkit::Object& tagged, int depth) {
    TaggedValue value{textOf(tagged, PID_TaggedValue_Name), indirectText(tagged, PID_TaggedValue_Value), {}};
    if (depth < kMaxNesting)
        if (uint16_t pid = extensionPid(tagged, kAAFPropID_TaggedValue_TaggedValueAttributeList))
            value.children = readList(tagged, pid, depth + 1);
    return value;
}

std::vector<TaggedValue> readList(const aafkit::Object& o, uint16_t pid, int depth) {
    std::vector<TaggedValue> values;
    for (const aafkit::Object* tagged : objectsOf(o, pid)) values.push_back(readTaggedValue(*tagged, depth));
    return values;
}

}  // namespace

std::vector<TaggedValue> readTaggedValues(const aafkit::Object& o, uint16_t pid) { return readList(o, pid, 0); }

Metadata readMetadata(const aafkit::Object& o, uint16_t commentsPid, uint16_t attributesPid,
                      const aafUID_t* attributeListId) {
    Metadata metadata;
    if (commentsPid) metadata.comments = readTaggedValues(o, commentsPid);
    if (attributesPid) metadata.attributes = readTaggedValues(o, attributesPid);
    if (attributeListId)
        if (uint16_t pid = extensionPid(o, *attributeListId)) {
            std::vector<TaggedValue> list = readTaggedValues(o, pid);
            metadata.attributes.insert(metadata.attributes.end(), list.begin(), list.end());
        }
    return metadata;
}

const TaggedValue* Metadata::find(const std::string& name) const {
    for (const std::vector<TaggedValue>* list : {&attributes, &comments})
        for (const TaggedValue& value : *list)
            if (value.name == name) return &value;
    return nullptr;
}

}  // namespace composition
