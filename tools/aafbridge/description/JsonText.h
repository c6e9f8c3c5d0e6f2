#pragma once
// JSON text into a value; every failure, number overflow included, is a
// DescriptionError that gives the line and column.
#include <istream>
#include <nlohmann/json.hpp>

nlohmann::json parseJsonText(std::istream& in);
