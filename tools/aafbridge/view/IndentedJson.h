#pragma once
// Prints a JSON document as it is handed over, laid out byte for byte as nlohmann's
// dump(2) lays out the whole value; only the chain of open objects and arrays is held.
#include <ostream>
#include <string>
#include <vector>

#include "view/JsonSink.h"

class IndentedJson : public JsonSink {
public:
    explicit IndentedJson(std::ostream& out) : out_(out) {}
    void openObject(const char* key) override { open(key, '{', '}'); }
    void openArray(const char* key) override { open(key, '[', ']'); }
    void add(const char* key, const nlohmann::ordered_json& value) override;
    void close() override;

private:
    struct Level {
        char closer;
        bool empty;
    };

    void open(const char* key, char opener, char closer);
    // The separator, indentation and key that put the next piece in place.
    std::string pieceStart(const char* key);
    std::string indentation() const;

    std::ostream& out_;
    std::vector<Level> open_;
};
