#pragma once
// A parse or I/O outcome: empty message means success. Errors say what and where.
#include <string>
#include <utility>

namespace aafkit {

class Status {
public:
    Status() = default;
    static Status error(std::string message) { return Status(std::move(message)); }
    bool ok() const { return message_.empty(); }
    explicit operator bool() const { return ok(); }
    const std::string& message() const { return message_; }

private:
    explicit Status(std::string message) : message_(std::move(message)) {}
    std::string message_;
};

}  // namespace aafkit
