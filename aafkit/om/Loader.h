#pragma once
// Materialises every object of a compound file: the MetaDictionary first (it
// declares the file's extension classes and dynamic pids), then the Header.
#include "../Status.h"
#include "../cfb/CompoundFileReader.h"

namespace aafkit {

class ObjectStore;

class Loader {
public:
    static Status load(const cfb::CompoundFileReader& storage, ObjectStore& store);
};

}  // namespace aafkit
