#pragma once
// Gives each distinct class id one place in a table: the storages of one class
// share it, and index 0 is the all-zero id that every stream has.
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

namespace aafkit::cfb {

using ClassId = std::array<uint8_t, 16>;

class ClassIdTable {
public:
    explicit ClassIdTable(std::vector<ClassId>& ids) : ids_(ids) { ids_.assign(1, ClassId{}); }
    uint32_t intern(const uint8_t* clsid) {
        ClassId key;
        std::memcpy(key.data(), clsid, key.size());
        if (key == ids_[0]) return 0;  // every stream
        if (key == ids_[last_]) return last_;  // neighbouring storages often share one
        const auto placed = index_.emplace(key, uint32_t(ids_.size()));
        if (placed.second) ids_.push_back(key);
        return last_ = placed.first->second;
    }

private:
    std::vector<ClassId>& ids_;
    std::map<ClassId, uint32_t> index_{{ClassId{}, 0}};
    uint32_t last_ = 0;
};

}  // namespace aafkit::cfb
