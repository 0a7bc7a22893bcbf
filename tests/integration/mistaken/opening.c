/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A program that does not link the library but opens it, for itself alone, and prints what
 * norix_deinitialize() returns before there was anything to deinitialise.
 */
#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char **argv) {
  void *library = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  void *symbol = library != NULL ? dlsym(library, "norix_deinitialize") : NULL;
  int (*deinitialize)(void);
  if (symbol == NULL) {
    return 1;
  }
  *(void **)&deinitialize = symbol;
  printf("%d\n", deinitialize());
  return 0;
}
