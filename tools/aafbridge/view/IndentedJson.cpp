#include "view/IndentedJson.h"

#include <string>

void IndentedJson::open(const char* key, char opener, char closer) {
    out_ << pieceStart(key) << opener;
    open_.push_back({closer, true});
}

void IndentedJson::add(const char* key, const nlohmann::ordered_json& value) {
    // dump(2) indents a nested value's continuation lines by its depth; strings never hold a
    // raw newline, so each one starts such a line. The piece goes out in one write.
    const std::string text = value.dump(2);
    std::string piece = pieceStart(key);
    const std::string newline = "\n" + indentation();
    size_t start = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; start = end + 1, end = text.find('\n', start))
        piece.append(text, start, end - start).append(newline);
    piece.append(text, start, std::string::npos);
    out_ << piece;
}

void IndentedJson::close() {
    const Level level = open_.back();
    open_.pop_back();
    if (!level.empty) out_ << '\n' << indentation();
    out_ << level.closer;
}

std::string IndentedJson::pieceStart(const char* key) {
    if (open_.empty()) return {};
    std::string start = open_.back().empty ? "\n" : ",\n";
    open_.back().empty = false;
    start += indentation();
    if (key) start += nlohmann::ordered_json(key).dump() + ": ";
    return start;
}

std::string IndentedJson::indentation() const { return std::string(2 * open_.size(), ' '); }
