// Loads an installed library by its path, from a program that has no run
// path and no LD_LIBRARY_PATH: the library's companions must be found
// through its own run path ($ORIGIN). Exits non-zero, with the loader's
// message, when they are not.
#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  if (dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  return 0;
}
