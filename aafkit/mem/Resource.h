#pragma once
// Where a table, an object store or an arena gets its memory, and the allocator that hands a
// standard container to it. The library's own small interface rather than the standard's
// polymorphic memory resources, which Apple's libc++ offers only from macOS 14: hosts that
// support older systems build it too.
#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace aafkit::mem {

class Resource {
public:
    virtual ~Resource() = default;
    void* allocate(size_t bytes, size_t alignment = alignof(std::max_align_t)) { return doAllocate(bytes, alignment); }
    void deallocate(void* p, size_t bytes, size_t alignment = alignof(std::max_align_t)) {
        doDeallocate(p, bytes, alignment);
    }

private:
    virtual void* doAllocate(size_t bytes, size_t alignment) = 0;
    virtual void doDeallocate(void* p, size_t bytes, size_t alignment) = 0;
};

// operator new and delete, aligned as asked. Stateless: one instance serves every thread.
Resource* heapResource();

// A standard allocator over a Resource; containers that share a resource compare equal.
template <class T>
class Allocator {
public:
    using value_type = T;

    Allocator() noexcept : resource_(heapResource()) {}
    Allocator(Resource* resource) noexcept : resource_(resource) {}  // NOLINT: converts as pmr's does
    template <class U>
    Allocator(const Allocator<U>& other) noexcept : resource_(other.resource()) {}

    T* allocate(size_t n) { return static_cast<T*>(resource_->allocate(n * sizeof(T), alignof(T))); }
    void deallocate(T* p, size_t n) noexcept { resource_->deallocate(p, n * sizeof(T), alignof(T)); }
    Resource* resource() const noexcept { return resource_; }

    template <class U>
    bool operator==(const Allocator<U>& other) const noexcept {
        return resource_ == other.resource();
    }
    template <class U>
    bool operator!=(const Allocator<U>& other) const noexcept {
        return resource_ != other.resource();
    }

private:
    Resource* resource_;
};

template <class T>
using Vector = std::vector<T, Allocator<T>>;
template <class T>
using Deque = std::deque<T, Allocator<T>>;
using String = std::basic_string<char, std::char_traits<char>, Allocator<char>>;
template <class Key, class Value, class Hash = std::hash<Key>, class Equal = std::equal_to<Key>>
using UnorderedMap = std::unordered_map<Key, Value, Hash, Equal, Allocator<std::pair<const Key, Value>>>;

}  // namespace aafkit::mem
