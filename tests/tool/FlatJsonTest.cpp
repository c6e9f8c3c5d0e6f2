// The flat JSON document that OpenTimelineIO input is read into: the same values as
// nlohmann-json's tree for any document, lookups that chain through absent values, and
// syntax errors with their place.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "description/DescriptionError.h"
#include "description/FlatJson.h"

namespace {

using Json = nlohmann::json;
using Kind = FlatJson::Kind;

// Walks both documents together and fails at the first value that differs.
void expectSame(const Json& expected, const FlatJson& flat, FlatJson::Index value, const std::string& where) {
    ASSERT_NE(value, FlatJson::kAbsent) << where;
    if (expected.is_object()) {
        ASSERT_EQ(flat.kind(value), Kind::object) << where;
        ASSERT_EQ(flat.size(value), expected.size()) << where;
        for (const auto& [key, child] : expected.items()) expectSame(child, flat, flat.member(value, key), where + "." + key);
    } else if (expected.is_array()) {
        ASSERT_EQ(flat.kind(value), Kind::array) << where;
        ASSERT_EQ(flat.size(value), expected.size()) << where;
        for (size_t i = 0; i < expected.size(); ++i)
            expectSame(expected[i], flat, flat.element(value, i), where + "[" + std::to_string(i) + "]");
        EXPECT_EQ(flat.element(value, expected.size()), FlatJson::kAbsent) << where;
    } else if (expected.is_string()) {
        ASSERT_EQ(flat.kind(value), Kind::text) << where;
        EXPECT_EQ(flat.text(value), expected.get<std::string>()) << where;
    } else if (expected.is_boolean()) {
        ASSERT_EQ(flat.kind(value), Kind::boolean) << where;
        EXPECT_EQ(flat.boolean(value), expected.get<bool>()) << where;
    } else if (expected.is_number()) {
        ASSERT_TRUE(flat.isNumber(value)) << where;
        EXPECT_EQ(flat.number(value), expected.get<double>()) << where;
        EXPECT_EQ(flat.shown(value), expected.dump()) << where;
    } else {
        EXPECT_EQ(flat.kind(value), Kind::null) << where;
    }
}

// Nested arrays and objects of every kind of value, member names shared between objects and
// given in different orders.
Json randomValue(std::mt19937& random, int depth) {
    static const char* const kNames[] = {"OTIO_SCHEMA", "name", "value", "rate", "children", "metadata", "é\"\\n"};
    switch (random() % (depth > 4 ? 5 : 7)) {
        case 0: return nullptr;
        case 1: return random() % 2 == 0;
        case 2: return int64_t(random()) - int64_t(random()) * 4096;
        case 3: return double(random()) / 7.0;
        case 4: return std::string(random() % 30, char('a' + random() % 26)) + "\t\u00e9";
        case 5: {
            Json array = Json::array();
            for (size_t n = random() % 6; n > 0; --n) array.push_back(randomValue(random, depth + 1));
            return array;
        }
        default: {
            Json object = Json::object();
            for (size_t n = random() % 6; n > 0; --n) object[kNames[random() % 7]] = randomValue(random, depth + 1);
            return object;
        }
    }
}

TEST(FlatJson, HoldsWhatNlohmannsTreeHoldsForAnyDocument) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const Json document = randomValue(random, 0);
        const FlatJson flat = FlatJson::parse(document.dump());
        expectSame(document, flat, flat.root(), "document " + std::to_string(round));
    }
    const Json extremes = {{"big", UINT64_MAX}, {"small", INT64_MIN}, {"real", 1e300}, {"nested", {{{{}}}, {{}}}}};
    const FlatJson flat = FlatJson::parse(extremes.dump());
    expectSame(extremes, flat, flat.root(), "extremes");
    EXPECT_EQ(flat.kind(flat.member(flat.root(), "big")), Kind::whole);
    EXPECT_EQ(flat.kind(flat.member(flat.root(), "small")), Kind::integer);
}

TEST(FlatJson, LookupsChainThroughWhatIsNotThere) {
    const FlatJson flat = FlatJson::parse(R"({"a": {"b": [10, {"c": "x"}]}, "d": null, "a2": 1, "dup": 1, "dup": 2})");
    const FlatJson::Index b = flat.member(flat.member(flat.root(), "a"), "b");
    EXPECT_EQ(flat.text(flat.member(flat.element(b, 1), "c")), "x");
    // Each step past a missing, null or wrongly kinded value answers kAbsent, never a value.
    EXPECT_EQ(flat.member(flat.member(flat.root(), "nothing"), "b"), FlatJson::kAbsent);
    EXPECT_EQ(flat.member(flat.member(flat.root(), "d"), "b"), FlatJson::kAbsent);
    EXPECT_EQ(flat.element(flat.member(flat.root(), "a"), 0), FlatJson::kAbsent);
    EXPECT_EQ(flat.member(b, "c"), FlatJson::kAbsent);
    EXPECT_EQ(flat.member(flat.root(), "a2b"), FlatJson::kAbsent);
    EXPECT_EQ(flat.kind(FlatJson::kAbsent), Kind::absent);
    EXPECT_EQ(flat.size(FlatJson::kAbsent), 0u);
    EXPECT_EQ(flat.size(flat.element(b, 0)), 0u);
    // The last of two members of one name counts, as in nlohmann's tree.
    EXPECT_EQ(flat.number(flat.member(flat.root(), "dup")), 2.0);
    EXPECT_EQ(flat.shown(flat.member(flat.root(), "a")), "an object");
    EXPECT_EQ(flat.shown(b), "an array");
    EXPECT_EQ(flat.shown(flat.member(flat.element(b, 1), "c")), "\"x\"");
}

TEST(FlatJson, SyntaxErrorsGiveTheirPlace) {
    const std::pair<const char*, const char*> kBroken[] = {
        {"", "line 1, column 1"},
        {"{\"a\": 1,\n \"b\": }", "line 2, column 7"},
        {"[1, 2", "line 1, column 6"},
        {"{\"a\": 1e400}", "line 1, column 11"},
        {"[1] 2", "line 1, column 5"},
    };
    for (const auto& [text, place] : kBroken) {
        try {
            FlatJson::parse(text);
            ADD_FAILURE() << text << " was taken";
        } catch (const DescriptionError& error) {
            EXPECT_EQ(std::string(error.what()).rfind(place, 0), 0u) << text << ": " << error.what();
        }
    }
}

}  // namespace
