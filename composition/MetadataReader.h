#pragma once
// User comments and attribute lists of mobs, slots, components and markers.
#include "TaggedValue.h"
#include "aafkit/om/Object.h"

namespace composition {

// The object's UserComments and Attributes, and the editors' attribute list named by
// `attributeListId` (Avid's MobAttributeList and the like) where the file uses it.
Metadata readMetadata(const aafkit::Object& o, uint16_t commentsPid, uint16_t attributesPid,
                      const aafUID_t* attributeListId = nullptr);
std::vector<TaggedValue> readTaggedValues(const aafkit::Object& o, uint16_t pid);

}  // namespace composition
