#include "JsonText.h"

#include <string>

#include "DescriptionError.h"

using Json = nlohmann::json;

namespace {

// The library's own tree builder, but a failure is kept with the place it happened
// instead of thrown from inside the parser: a number out of range (1e400) is
// reported there without a line or column.
class PlacedErrors {
public:
    explicit PlacedErrors(Json& result) : tree_(result, false) {}

    bool null() { return tree_.null(); }
    bool boolean(bool value) { return tree_.boolean(value); }
    bool number_integer(Json::number_integer_t value) { return tree_.number_integer(value); }
    bool number_unsigned(Json::number_unsigned_t value) { return tree_.number_unsigned(value); }
    bool number_float(Json::number_float_t value, const std::string& text) { return tree_.number_float(value, text); }
    bool string(std::string& value) { return tree_.string(value); }
    bool binary(Json::binary_t& value) { return tree_.binary(value); }
    bool start_object(std::size_t size) { return tree_.start_object(size); }
    bool key(std::string& value) { return tree_.key(value); }
    bool end_object() { return tree_.end_object(); }
    bool start_array(std::size_t size) { return tree_.start_array(size); }
    bool end_array() { return tree_.end_array(); }

    bool parse_error(std::size_t consumed, const std::string&, const nlohmann::detail::exception& error) {
        consumed_ = consumed;
        message_ = error.what();
        return false;
    }

    std::size_t consumed() const { return consumed_; }

    const std::string& message() const { return message_; }

private:
    nlohmann::detail::json_sax_dom_parser<Json> tree_;
    std::size_t consumed_ = 0;
    std::string message_;
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

Json parseJsonText(std::istream& in) {
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Json result;
    PlacedErrors handler(result);
    if (Json::sax_parse(text, &handler)) return result;
    throw DescriptionError(placeOf(text, handler.consumed()) + ": " + reasonOf(handler.message()));
}
