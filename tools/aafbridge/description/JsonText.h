#pragma once
// JSON text read through nlohmann-json's SAX parser, into nlohmann's tree or into a handler
// of one's own; every failure, number overflow included, is a DescriptionError that gives
// the line and column.
#include <cstddef>
#include <istream>
#include <nlohmann/json.hpp>
#include <string>

std::string readText(std::istream& in);

nlohmann::json parseJsonText(const std::string& text);

// Where the parser gave up, and why. A handler derives from it, so that the parser's error
// is kept with its place instead of thrown from inside the parser without one (a number out
// of range, 1e400, would be).
class SyntaxPlace {
public:
    bool parse_error(std::size_t consumed, const std::string& token, const nlohmann::detail::exception& error);
    [[noreturn]] void raise(const std::string& text) const;

private:
    std::size_t consumed_ = 0;
    std::string message_;
};

template <class Handler>
void parseJsonText(const std::string& text, Handler& handler) {
    if (!nlohmann::json::sax_parse(text, &handler)) handler.raise(text);
}
