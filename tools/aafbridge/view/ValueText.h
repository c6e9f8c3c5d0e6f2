#pragma once
// Readable text for a stored property value, decoded by the property's type.
#include <string>

#include "aafkit/File.h"

std::string valueText(const aafkit::File& file, const aafkit::Property& property);
// The class name of an object, or its AUID when the file does not define it.
std::string className(const aafkit::Object& object);
std::string propertyName(const aafkit::File& file, uint16_t pid);
