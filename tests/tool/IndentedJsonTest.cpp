// A document handed to IndentedJson piece by piece prints exactly as nlohmann's dump(2)
// prints it whole, however it is split: that is what lets timeline --json stream.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "view/IndentedJson.h"

using Json = nlohmann::ordered_json;

namespace {

// Opens every object and array down to `depth` and hands what lies deeper over whole.
void send(JsonSink& sink, const char* key, const Json& value, int depth) {
    if (depth == 0 || !value.is_structured()) {
        sink.add(key, value);
        return;
    }
    if (value.is_object()) {
        sink.openObject(key);
        for (const auto& member : value.items()) send(sink, member.key().c_str(), member.value(), depth - 1);
    } else {
        sink.openArray(key);
        for (const Json& element : value) send(sink, nullptr, element, depth - 1);
    }
    sink.close();
}

std::string printed(const Json& document, int depth) {
    std::ostringstream out;
    IndentedJson json(out);
    send(json, nullptr, document, depth);
    return out.str();
}

Json document() {
    return Json::parse(R"({
  "flag": true, "nothing": null, "rate": 25.0, "small": -3, "big": 18446744073709551615,
  "text": "line\nbreak \"quoted\" tab\t bell\u0007 caf\u00e9 \ud83c\udfac",
  "key \"with\" quotes": {},
  "empty": [],
  "emptyObject": {},
  "clips": [{"id": "a", "tracks": [{"slot": 1, "video": true}, {"slot": 2, "video": false}]}, {"id": "b", "tracks": []}],
  "tracks": [{"type": "video", "events": []}, {"type": "audio", "events": [{"kind": "filler", "inputs": [[], [[]], {}]}]}],
  "nested": [[[1, [2, {"deep": [3]}]]]]
})");
}

TEST(IndentedJson, PrintsAsDumpDoesHoweverTheDocumentIsSplit) {
    const Json whole = document();
    for (int depth = 0; depth <= 7; ++depth) EXPECT_EQ(printed(whole, depth), whole.dump(2)) << "depth " << depth;
}

TEST(IndentedJson, PrintsEmptyAndScalarDocumentsAsDumpDoes) {
    for (const Json& document : {Json::object(), Json::array(), Json(7), Json("text"), Json::array({Json::object()})})
        for (int depth = 0; depth <= 2; ++depth) EXPECT_EQ(printed(document, depth), document.dump(2)) << document;
}

// nlohmann refuses text that is not UTF-8 (an unpaired surrogate read from a file gives
// such text); the piece that holds it must not be half printed.
TEST(IndentedJson, RefusesTextThatIsNotUtf8WithoutPrintingAnyOfIt) {
    std::ostringstream out;
    IndentedJson json(out);
    json.openArray(nullptr);
    json.add(nullptr, "before");
    const std::string shown = out.str();
    EXPECT_THROW(json.add(nullptr, {{"name", "A\xED\xA0\x80" "B"}}), Json::type_error);
    EXPECT_EQ(out.str(), shown);
}

}  // namespace
