#pragma once
// A JSON description the writer cannot take, or a call it refused; the text names the
// item by its JSON path.
#include <stdexcept>

struct DescriptionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
