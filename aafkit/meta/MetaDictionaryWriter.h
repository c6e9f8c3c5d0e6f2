#pragma once
// Builds the MetaDictionary of a new file from its model: every built-in class
// and type, every extension the file uses, each class with all its properties.
namespace aafkit {
class ObjectStore;
}

namespace aafkit::meta {

// Replaces the root's MetaDictionary with one that describes the objects as they are now.
void writeMetaDictionary(ObjectStore& store);

}  // namespace aafkit::meta
