// The committed tables must say what the model tables say, column for column: a
// table edited without re-running scripts/gen_model.py, or a generator that drops,
// reorders or mis-maps a row, a name or an AUID, fails here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "aafkit/AafTypes.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/meta/BaselineModel.h"

using namespace aafkit::meta;

namespace {

using Lines = std::vector<std::string>;

const std::string kModelDir = std::string(AAFBRIDGE_SHARED_DIR) + "/aaf-model/";

// Data lines of a table, the column names left out.
Lines readTable(const std::string& file) {
    std::ifstream in(kModelDir + file);
    Lines lines;
    std::string line;
    for (std::getline(in, line); std::getline(in, line);) lines.push_back(line);
    return lines;
}

// What the generated table should hold: the baseline rows in order, then the
// extension rows that do not repeat one, each tagged with where it came from.
Lines expectedRows(const std::string& table) {
    Lines expected = readTable(table + ".tsv");
    const std::set<std::string> baseline(expected.begin(), expected.end());
    for (std::string& line : expected) line += "\tbaseline";
    for (const std::string& line : readTable("avid-ext-" + table + ".tsv"))
        if (!baseline.count(line)) expected.push_back(line + "\textension");
    return expected;
}

std::string join(const Lines& columns) {
    std::string line;
    for (const std::string& column : columns) line += (line.empty() ? "" : "\t") + column;
    return line;
}

std::string text(const aafUID_t& id) { return aafkit::auidToText(id); }
std::string yesNo(bool value) { return value ? "yes" : "no"; }
std::string origin(bool extension) { return extension ? "extension" : "baseline"; }

std::string hex(const char* format, uint32_t value) {
    char out[16];
    std::snprintf(out, sizeof out, format, value);
    return out;
}

// Names rather than AUIDs, as the tables write them: an AUID that leads to no
// row shows as itself and so differs.
std::string typeName(const aafUID_t& id) {
    for (const BaselineType& t : baselineTypes())
        if (t.id == id) return t.name.c_str();
    return text(id);
}

std::string render(const BaselineClass& c) {
    return join({c.name.c_str(), text(c.id), c.parent.c_str(), yesNo(c.concrete), origin(c.extension)});
}

std::string render(const BaselineProperty& p) {
    return join({p.owner.c_str(), p.name.c_str(), text(p.id), p.pid ? hex("%04x", p.pid) : "", typeName(p.type),
                 text(p.type), yesNo(p.optional), yesNo(p.uniqueId), origin(p.extension)});
}

std::string details(const BaselineType& t) {
    const std::string element = "element=" + typeName(t.element);
    switch (t.kind) {
    case TypeKind::Integer: return "size=" + std::to_string(t.size) + " signed=" + yesNo(t.isSigned);
    case TypeKind::Enum:
    case TypeKind::VariableArray:
    case TypeKind::Set:
    case TypeKind::String: return element;
    case TypeKind::FixedArray: return element + " count=" + std::to_string(t.count);
    case TypeKind::Rename: return "base=" + typeName(t.element);
    case TypeKind::StrongRef: return std::string("target=") + t.target.c_str();
    case TypeKind::WeakRef: {
        std::string path;
        for (uint8_t i = 0; i < t.pathLength; ++i) path += (i ? "/" : "") + text(t.path[i]);
        return std::string("target=") + t.target.c_str() + " path=" + path;
    }
    default: return "";
    }
}

std::string render(const BaselineType& t) {
    static const char* const kinds[] = {"integer", "character", "enum", "extendible_enum", "record",
                                        "fixed_array", "variable_array", "set", "string", "strong_ref",
                                        "weak_ref", "rename", "indirect", "opaque", "stream"};
    return join({t.name.c_str(), text(t.id), kinds[size_t(t.kind)], details(t), origin(t.extension)});
}

std::string render(const BaselineTypeMember& m) {
    const std::string type = m.type.c_str(), name = m.name.c_str();
    switch (m.kind) {
    case MemberKind::Record: return join({"record", type, name, typeName(m.memberType), origin(m.extension)});
    case MemberKind::Enum: return join({"enum", type, name, std::to_string(m.value), origin(m.extension)});
    default: return join({"extenum", type, name, text(m.extValue), origin(m.extension)});
    }
}

std::string render(const BaselineDefinition& d) {
    static const char* const groups[] = {"DataDefs",  "OperationDefs",   "ParameterDefs", "InterpolationDefs",
                                         "CodecDefs", "ContainerDefs",   "CompressionDefs", "PluginDefs",
                                         "KLVDataDefs", "TaggedValueDefs"};
    return join({groups[size_t(d.group)], d.name.c_str(), text(d.id), d.description.c_str()});
}

std::string render(const ResultCode& r) { return join({r.name.c_str(), hex("0x%08X", r.code)}); }

template <typename T>
void expectRows(Table<T> table, const Lines& expected, const std::string& what) {
    Lines actual;
    for (const T& row : table) actual.push_back(render(row));
    for (size_t i = 0; i < std::min(actual.size(), expected.size()); ++i)
        ASSERT_EQ(actual[i], expected[i]) << what << " row " << i;
    EXPECT_EQ(actual.size(), expected.size()) << what;
}

TEST(GeneratedTables, HoldEveryRowOfTheModelTables) {
    if (!std::ifstream(kModelDir + "classes.tsv")) GTEST_SKIP() << "model tables not found in " << kModelDir;
    expectRows(baselineClasses(), expectedRows("classes"), "classes");
    expectRows(baselineProperties(), expectedRows("properties"), "properties");
    expectRows(baselineTypes(), expectedRows("types"), "types");
    expectRows(baselineTypeMembers(), expectedRows("type-members"), "type members");
    expectRows(baselineDefinitions(), readTable("definitions.tsv"), "definitions");
    expectRows(resultCodes(), readTable("results.tsv"), "result codes");
}

// Callers compare results against these constants across the C interface.
TEST(GeneratedTables, ResultConstantsHoldTheTabledCodes) {
    const Lines rows = readTable("results.tsv");
    if (rows.empty()) GTEST_SKIP() << "model tables not found in " << kModelDir;
    const std::pair<const char*, AAFRESULT> constants[] = {
        {"AAFRESULT_SUCCESS", AAFRESULT_SUCCESS},
        {"AAFRESULT_NOT_IMPLEMENTED", AAFRESULT_NOT_IMPLEMENTED},
        {"AAFRESULT_PROP_NOT_PRESENT", AAFRESULT_PROP_NOT_PRESENT},
        {"AAFRESULT_NOT_AAF_FILE", AAFRESULT_NOT_AAF_FILE},
        {"AAFRESULT_RESULT_NOT_RECOGNIZED", AAFRESULT_RESULT_NOT_RECOGNIZED},
    };
    for (const auto& [name, code] : constants)
        EXPECT_EQ(std::count(rows.begin(), rows.end(), join({name, hex("0x%08X", uint32_t(code))})), 1) << name;
}

}  // namespace
