// The committed tables must still be what the model tables say: a table edited without
// re-running scripts/gen_model.py, or a generator that drops or reorders rows, fails here.
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ModelLookup.h"

namespace modeltest {
namespace {

using Rows = std::vector<std::vector<std::string>>;

const std::string kModelDir = std::string(AAFBRIDGE_SHARED_DIR) + "/aaf-model/";

// Data rows of a tab-separated table, the header line left out.
Rows readTable(const std::string& file) {
    std::ifstream in(kModelDir + file);
    Rows rows;
    std::string line;
    for (std::getline(in, line); std::getline(in, line);) {
        std::vector<std::string> fields;
        std::istringstream split(line);
        for (std::string field; std::getline(split, field, '\t');) fields.push_back(field);
        rows.push_back(fields);
    }
    return rows;
}

// Two neighbouring columns of a table row, as the key functions below give a generated row.
std::string columnPair(const std::vector<std::string>& row, size_t firstColumn) {
    return row.at(firstColumn) + " " + row.at(firstColumn + 1);
}

// Baseline rows come first and in table order.
template <typename T, typename Key>
void expectBaselineRows(Table<T> table, const std::string& file, size_t firstColumn, Key key) {
    Rows rows = readTable(file);
    ASSERT_FALSE(rows.empty()) << file;
    ASSERT_GE(table.count, rows.size()) << file;
    for (size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(key(table.rows[i]), columnPair(rows[i], firstColumn)) << file << " row " << i + 2;
}

// Every extension row is in the table, once: after the baseline rows or as one of them.
template <typename T, typename Key>
void expectExtensionRows(Table<T> table, const std::string& file, size_t firstColumn, Key key) {
    for (const auto& row : readTable(file)) {
        size_t count = 0;
        for (const T& entry : table) count += key(entry) == columnPair(row, firstColumn);
        EXPECT_EQ(count, 1u) << file << ": " << columnPair(row, firstColumn);
    }
}

template <typename T>
std::string keyOf(const T& row) {
    return std::string(row.name) + " " + aafkit::auidToText(row.id);
}

class GeneratedTables : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::ifstream(kModelDir + "classes.tsv"))
            GTEST_SKIP() << "model tables not found in " << kModelDir;
    }
};

TEST_F(GeneratedTables, FollowTheModelTables) {
    auto classKey = keyOf<BaselineClass>;
    auto propertyKey = keyOf<BaselineProperty>;
    auto typeKey = keyOf<BaselineType>;
    expectBaselineRows(baselineClasses(), "classes.tsv", 0, classKey);
    expectBaselineRows(baselineProperties(), "properties.tsv", 1, propertyKey);
    expectBaselineRows(baselineTypes(), "types.tsv", 0, typeKey);
    expectBaselineRows(baselineDefinitions(), "definitions.tsv", 1, keyOf<BaselineDefinition>);
    EXPECT_EQ(baselineDefinitions().count, readTable("definitions.tsv").size());
    expectExtensionRows(baselineClasses(), "avid-ext-classes.tsv", 0, classKey);
    expectExtensionRows(baselineProperties(), "avid-ext-properties.tsv", 1, propertyKey);
    expectExtensionRows(baselineTypes(), "avid-ext-types.tsv", 0, typeKey);
}

TEST_F(GeneratedTables, KeepEveryMemberInOrder) {
    auto memberKey = [](const BaselineTypeMember& m) { return std::string(m.type) + " " + m.name; };
    expectBaselineRows(baselineTypeMembers(), "type-members.tsv", 1, memberKey);
    expectExtensionRows(baselineTypeMembers(), "avid-ext-type-members.tsv", 1, memberKey);
}

TEST_F(GeneratedTables, KeepEveryResultCode) {
    Rows results = readTable("results.tsv");
    ASSERT_EQ(resultCodes().count, results.size());
    for (size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(resultCodes().rows[i].name, results[i][0]);
        EXPECT_EQ(resultCodes().rows[i].code, std::stoul(results[i][1], nullptr, 16)) << results[i][0];
    }
}

}  // namespace
}  // namespace modeltest
