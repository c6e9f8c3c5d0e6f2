#include "ObjectTree.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/meta/MetaModel.h"

namespace {

using aafkit::Object;
using aafkit::Property;
using aafkit::StoredForm;

const uint8_t kGeneratedLabel[16] = {0x06, 0x0a, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x01,
                                     0x01, 0x01, 0x0f, 0x00, 0x13, 0x00, 0x00, 0x00};
const uint8_t kGeneratedTail[8] = {0x06, 0x0e, 0x2b, 0x34, 0x7f, 0x7f, 0x2a, 0x80};

bool isGeneratedMobId(const std::vector<uint8_t>& bytes) {
    return bytes.size() == 32 && std::equal(kGeneratedLabel, kGeneratedLabel + 16, bytes.begin()) &&
           std::equal(kGeneratedTail, kGeneratedTail + 8, bytes.begin() + 24);
}

bool skipped(uint16_t pid) {
    switch (pid) {
    case PID_Mob_CreationTime:
    case PID_Mob_LastModified:
    case PID_Header_LastModified:
    case PID_Identification_Date:
    case PID_Identification_GenerationAUID:
    case PID_Identification_ToolkitVersion:
    case PID_Identification_Platform:
    case aafkit::meta::kRootMetaDictionaryPid:
        return true;
    default:
        return false;
    }
}

class Canonicalizer {
public:
    explicit Canonicalizer(const aafkit::File& file) : file_(file) {
        const std::vector<Object*>* mobs = nullptr;
        if (file.contentStorage() && aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_Mobs, mobs) == 0)
            for (const Object* mob : *mobs) labels_[mobIdBytes(*mob)] = label(*mob);
        collectReferencedKeys(*file.root());
    }

    std::string object(const Object& o, const std::string& indent) {
        std::string text = indent + "<" + aafkit::auidToText(o.classId()) + ">\n";
        std::vector<const Property*> properties;
        for (const Property& p : o.properties()) properties.push_back(&p);
        std::sort(properties.begin(), properties.end(),
                  [](const Property* a, const Property* b) { return a->pid < b->pid; });
        for (const Property* p : properties)
            if (!skipped(p->pid)) text += property(*p, indent + "  ");
        return text;
    }

private:
    static std::vector<uint8_t> mobIdBytes(const Object& mob) {
        const Property* id = mob.find(PID_Mob_MobID);
        return id ? std::vector<uint8_t>(id->data) : std::vector<uint8_t>();
    }

    // What a reference to a generated mob is compared by: the mob's kind, name and media.
    static std::string label(const Object& mob) {
        std::string text = aafkit::auidToText(mob.classId());
        std::wstring name;
        if (aafkit::getString(mob, PID_Mob_Name, name) == 0) text += " " + aafkit::wideToUtf8(name);
        Object* descriptor = nullptr;
        if (aafkit::getObject(mob, PID_SourceMob_EssenceDescription, descriptor) == 0) {
            text += " " + aafkit::auidToText(descriptor->classId());
            const std::vector<Object*>* locators = nullptr;
            std::wstring path;
            if (aafkit::getObjects(*descriptor, PID_EssenceDescriptor_Locator, locators) == 0 && !locators->empty() &&
                aafkit::getString(*locators->front(), PID_NetworkLocator_URLString, path) == 0)
                text += " " + aafkit::wideToUtf8(path);
        }
        return text;
    }

    void collectReferencedKeys(const Object& o) {
        for (const Property& p : o.properties()) {
            if (p.pid == aafkit::meta::kRootMetaDictionaryPid) continue;
            for (const aafkit::WeakReference& reference : p.weakReferences()) referenced_.insert(reference.key);
            for (const Object* child : p.objects()) collectReferencedKeys(*child);
        }
    }

    // Every new file carries the built-in data and container definitions; only those
    // that something references belong to the content.
    bool kept(const Property& set, const Object& element) const {
        if (set.pid != PID_Dictionary_DataDefinitions && set.pid != PID_Dictionary_ContainerDefinitions) return true;
        const Property* id = element.find(PID_DefinitionObject_Identification);
        return id && referenced_.count(id->data);
    }

    std::string weak(const aafkit::WeakReference& reference) const {
        std::string path;
        if (reference.pathId < file_.paths().size())
            for (uint16_t pid : file_.paths()[reference.pathId]) path += std::to_string(pid) + "/";
        return path + aafkit::hexText(reference.key.data(), reference.key.size());
    }

    std::string data(const Property& p) const {
        if (p.pid == PID_Mob_MobID && isGeneratedMobId(p.data)) return "generated";
        if (p.pid == PID_SourceReference_SourceID && isGeneratedMobId(p.data)) {
            auto target = labels_.find(p.data);
            return "-> " + (target == labels_.end() ? std::string("missing mob") : target->second);
        }
        return aafkit::hexText(p.data.data(), p.data.size());
    }

    std::string property(const Property& p, const std::string& indent) {
        std::string head = indent + std::to_string(p.pid) + " ";
        switch (p.storedForm()) {
        case StoredForm::StrongRef:
        case StoredForm::StrongRefVector: {
            std::string text = head + "[\n";
            for (const Object* child : p.objects()) text += object(*child, indent + "  ");
            return text;
        }
        case StoredForm::StrongRefSet: {
            std::vector<std::string> elements;
            for (const Object* child : p.objects())
                if (kept(p, *child)) elements.push_back(object(*child, indent + "  "));
            std::sort(elements.begin(), elements.end());
            std::string text = head + "{\n";
            for (const std::string& element : elements) text += element;
            return text;
        }
        case StoredForm::WeakRef:
        case StoredForm::WeakRefVector:
        case StoredForm::WeakRefSet: {
            std::vector<std::string> targets;
            for (const aafkit::WeakReference& reference : p.weakReferences()) targets.push_back(weak(reference));
            if (p.storedForm() == StoredForm::WeakRefSet) std::sort(targets.begin(), targets.end());
            std::string text = head + "->";
            for (const std::string& target : targets) text += " " + target;
            return text + "\n";
        }
        default:
            return head + "= " + data(p) + "\n";
        }
    }

    const aafkit::File& file_;
    std::map<std::vector<uint8_t>, std::string> labels_;
    std::set<std::vector<uint8_t>> referenced_;
};

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

}  // namespace

std::string canonicalTree(const aafkit::File& file) {
    Canonicalizer canonicalizer(file);
    return canonicalizer.object(*file.root(), "");
}

std::string firstDifference(const std::string& mine, const std::string& reference) {
    std::vector<std::string> a = lines(mine), b = lines(reference);
    size_t i = 0;
    while (i < a.size() && i < b.size() && a[i] == b[i]) ++i;
    if (i == a.size() && i == b.size()) return "";
    std::string context;
    for (size_t k = i >= 3 ? i - 3 : 0; k < i; ++k) context += "  " + a[k] + "\n";
    return "line " + std::to_string(i + 1) + "\n" + context + "mine:      " + (i < a.size() ? a[i] : "(end)") +
           "\nreference: " + (i < b.size() ? b[i] : "(end)");
}
