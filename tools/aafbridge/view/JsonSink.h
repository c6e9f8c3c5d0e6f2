#pragma once
// A JSON document handed over piece by piece in document order, so that whoever takes it
// can keep it whole or print each piece as it comes. `key` names the piece inside an
// object and is null inside an array or for the document itself.
#include <nlohmann/json.hpp>

class JsonSink {
public:
    virtual ~JsonSink() = default;
    virtual void openObject(const char* key) = 0;
    virtual void openArray(const char* key) = 0;
    // A complete value inside the innermost open object or array.
    virtual void add(const char* key, const nlohmann::ordered_json& value) = 0;
    // Ends the innermost open object or array; one must be open.
    virtual void close() = 0;
};
