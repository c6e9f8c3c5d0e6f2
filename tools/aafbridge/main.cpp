#include <cstdio>

int main() {
    std::fprintf(stderr, "usage: aafbridge <command> ...\n");
    return 2;
}
