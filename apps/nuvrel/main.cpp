// nuvrel: the command-line front end. Parses arguments and hands over to the library.
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc > 1 && (std::strcmp(argv[1], "--version") == 0)) {
        std::puts("nuvrel " NUVREL_VERSION);
        return 0;
    }
    std::puts("nuvrel: the pipeline has not landed yet; nothing to answer.");
    return 0;
}
