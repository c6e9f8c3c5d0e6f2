#pragma once
// Small typed reads used throughout the composition reading: a value or a default, never a
// failure, since a missing optional property is no reason to lose the object.
#include <cstdint>
#include <string>
#include <vector>

#include "aafkit/om/Object.h"

namespace composition {

std::string textOf(const aafkit::Object& o, uint16_t pid);
int64_t int64Of(const aafkit::Object& o, uint16_t pid, int64_t fallback = 0);
uint32_t uint32Of(const aafkit::Object& o, uint16_t pid, uint32_t fallback = 0);
aafRational_t rationalOf(const aafkit::Object& o, uint16_t pid);
// A mob slot's edit rate, stored by event and timeline slots under properties of their own.
aafRational_t slotEditRate(const aafkit::Object& slot);
// The objects of a strong-reference vector or set; empty when there are none.
const std::vector<aafkit::Object*>& objectsOf(const aafkit::Object& o, uint16_t pid);
// The pid this file gave an extension property; 0 when the file does not use it.
uint16_t extensionPid(const aafkit::Object& o, const aafUID_t& propertyId);
// An indirect value as text: strings as they are, numbers in decimal, anything else in hex.
std::string indirectText(const aafkit::Object& o, uint16_t pid);
// The stored class's name ("DescriptiveMarker"), or its AUID when the file does not name it.
std::string classNameOf(const aafkit::Object& o);

}  // namespace composition
