#pragma once
// A file's object tree as text that two writers of the same content agree on:
// generated MobIDs and times left out, references to generated mobs named by the
// mob they reach, sets sorted, the MetaDictionary skipped.
#include <string>

#include "aafkit/File.h"

std::string canonicalTree(const aafkit::File& file);

// The first line where the two texts differ, with its neighbourhood; "" when equal.
std::string firstDifference(const std::string& mine, const std::string& reference);
