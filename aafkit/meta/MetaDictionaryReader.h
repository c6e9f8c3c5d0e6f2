#pragma once
// Declares into a file's model the classes, properties and types that its
// MetaDictionary adds to the built-in model, and binds its dynamic pids.
#include "../Status.h"
#include "MetaModel.h"

namespace aafkit {
class Object;
}

namespace aafkit::meta {

Status readMetaDictionary(const Object& metaDictionary, MetaModel& model);

}  // namespace aafkit::meta
