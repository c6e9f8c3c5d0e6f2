#include "description/JsonText.h"

#include <iterator>

#include "description/DescriptionError.h"

using Json = nlohmann::json;

namespace {

// nlohmann's own tree builder, its errors kept with their place.
class PlacedTree : public nlohmann::detail::json_sax_dom_parser<Json>, public SyntaxPlace {
public:
    explicit PlacedTree(Json& result) : json_sax_dom_parser(result, false) {}
    using SyntaxPlace::parse_error;
};

// The line and column of the last character the parser read, counted from 1.
std::string placeOf(const std::string& text, std::size_t consumed) {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i + 1 < consumed && i < text.size(); ++i) {
        const bool newline = text[i] == '\n';
        line += newline ? 1 : 0;
        column = newline ? 1 : column + 1;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// The library's message without its exception tag and without the place it may give:
// the place is given once, the same way for every error.
std::string reasonOf(const std::string& message) {
    std::string reason = message.substr(message.find("] ") == std::string::npos ? 0 : message.find("] ") + 2);
    if (reason.rfind("parse error at line", 0) == 0 && reason.find(": ") != std::string::npos)
        reason = reason.substr(reason.find(": ") + 2);
    return reason;
}

}  // namespace

bool SyntaxPlace::parse_error(std::size_t consumed, const std::string&, const nlohmann::detail::exception& error) {
    consumed_ = consumed;
    message_ = error.what();
    return false;
}

void SyntaxPlace::raise(const std::string& text) const {
    throw DescriptionError(placeOf(text, consumed_) + ": " + reasonOf(message_));
}

std::string readText(std::istream& in) {
    // Whole blocks at a time, into space for the whole file when its size is known: a
    // character at a time costs as much as parsing them.
    std::string text;
    const std::istream::pos_type start = in.tellg();
    if (start != std::istream::pos_type(-1) && in.seekg(0, std::ios::end)) {
        text.reserve(size_t(in.tellg() - start));
        in.seekg(start);
    }
    in.clear();
    char block[1 << 16];
    while (in.read(block, sizeof block) || in.gcount() > 0) text.append(block, size_t(in.gcount()));
    return text;
}

Json parseJsonText(const std::string& text) {
    Json result;
    PlacedTree handler(result);
    parseJsonText(text, handler);
    return result;
}
