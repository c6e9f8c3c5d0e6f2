#include "cli/BufferedStdout.h"

bool BufferedStdout::writeBuffered() {
    const size_t size = size_t(pptr() - pbase());
    setp(buffer_, buffer_ + sizeof buffer_);
    return std::fwrite(buffer_, 1, size, stdout) == size;
}

BufferedStdout::int_type BufferedStdout::overflow(int_type c) {
    if (!writeBuffered()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
}

int BufferedStdout::sync() { return writeBuffered() && std::fflush(stdout) == 0 ? 0 : -1; }
