// aafbridge objects FILE [--json]: every object from the Header down, properties
// decoded by their types. Sets come in key order, so the output is deterministic.
#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "commands/Commands.h"
#include "cli/OpenFile.h"
#include "view/ValueText.h"
#include "aafkit/File.h"

using Json = nlohmann::ordered_json;

namespace {

Json objectJson(const aafkit::File& file, const aafkit::Object& object) {
    Json properties = Json::array();
    for (const aafkit::Property& p : object.properties()) {
        Json entry = {{"name", propertyName(file, p.pid)}, {"pid", p.pid}};
        if (p.storedForm() == aafkit::StoredForm::StrongRef) {
            entry["object"] = objectJson(file, *p.objects().at(0));
        } else if (p.isStrong()) {
            Json elements = Json::array();
            for (const aafkit::Object* element : p.objects()) elements.push_back(objectJson(file, *element));
            entry["objects"] = std::move(elements);
        } else {
            entry["value"] = valueText(file, p);
        }
        properties.push_back(std::move(entry));
    }
    return {{"class", className(object)}, {"properties", std::move(properties)}};
}

void printText(const Json& object, int depth) {
    const std::string indent(2 * depth, ' ');
    std::cout << indent << object["class"].get<std::string>() << "\n";
    for (const Json& p : object["properties"]) {
        const std::string name = p["name"].get<std::string>();
        if (p.contains("object")) {
            std::cout << indent << "  " << name << ":\n";
            printText(p["object"], depth + 2);
        } else if (p.contains("objects")) {
            size_t i = 0;
            for (const Json& element : p["objects"]) {
                std::cout << indent << "  " << name << "[" << i++ << "]:\n";
                printText(element, depth + 2);
            }
            if (i == 0) std::cout << indent << "  " << name << ": (empty)\n";
        } else {
            std::cout << indent << "  " << name << " = " << p["value"].get<std::string>() << "\n";
        }
    }
}

}  // namespace

int runObjects(const Invocation& invocation) {
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, invocation.operand(0));
    if (!file) return kExitFailure;
    const Json tree = objectJson(*file, *file->header());
    if (invocation.has("--json"))
        std::cout << tree.dump(1) << "\n";
    else
        printText(tree, 0);
    return kExitSuccess;
}
