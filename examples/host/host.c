/* SPDX-License-Identifier: MIT */
/*
 * The smallest host: loads the library, makes a package and reads a property back.
 *
 *   host LIBRARY PACKAGE
 */
#include <dlfcn.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "gateway/FunctionTable.h"
#include "hostarray/kxarray.h"

enum { kCreatePackage = 0, kGetProperties = 2 };

typedef const HostFunctionTable* (*Query)(void);

static const HostFunctionTable* load(const char* library) {
  void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  Query query = NULL;
  if (handle != NULL) *(void**)&query = dlsym(handle, "QueryKRFcnTable_kraddon_packaging");
  if (query == NULL) {
    fprintf(stderr, "host: %s\n", dlerror());
    exit(1);
  }
  return query();
}

static void print(const char16_t* text, size_t length) {
  for (size_t i = 0; i < length; ++i) putchar(text[i] < 0x80 ? (int)text[i] : '?');
}

/* All ten fields: one that is missing is the host's error, and ends the call. */
static kxArray* newProperties(void) {
  static const char* const fields[] = {
      "type",    "name",       "version",       "KorvanRelease",
      "summary", "authorName", "authorContact", "authorOrganization",
      "GUID",    "description"};
  static const char16_t* const values[] = {u"Korvan Toolbox",
                                           u"Wave Tools",
                                           u"1.2",
                                           u"R9",
                                           u"Short-time spectra",
                                           u"Ada Lind",
                                           u"",
                                           u"",
                                           u"6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f",
                                           u""};
  const size_t one = 1;
  const size_t count = sizeof fields / sizeof *fields;
  kxArray* properties = kxCreateStructArray(1, &one, count, fields);
  for (size_t i = 0; i < count; ++i) {
    kxSetField(properties, 0, fields[i], kxCreateString_UTF16(values[i]));
  }
  return properties;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: host LIBRARY PACKAGE\n");
    return 2;
  }
  const HostFunctionTable* table = load(argv[1]);
  printf("%" PRIu64 " gateways\n", table->entryPointCount);

  char16_t path[1024] = {0}; /* an ASCII path will do here */
  for (size_t i = 0; argv[2][i] != 0 && i < 1023; ++i) path[i] = (unsigned char)argv[2][i];

  kxArray* properties = newProperties();
  kxArray* name = kxCreateString_UTF16(path);

  const kxArray* made[] = {name, properties};
  kxArray* nothing[1] = {NULL};
  table->entryPoints[kCreatePackage](0, nothing, 2, made);

  const kxArray* asked[] = {name};
  kxArray* answer[1] = {NULL};
  table->entryPoints[kGetProperties](1, answer, 1, asked);
  if (answer[0] == NULL) { /* how a gateway says that it failed */
    fprintf(stderr, "host: no properties\n");
    return 1;
  }
  const kxArray* value = kxGetField(answer[0], 0, "name");
  print(kxGetConstChars(value), kxGetNumberOfElements(value));
  putchar('\n');

  kxDestroyArray(answer[0]); /* outputs are the caller's, and so are its inputs */
  kxDestroyArray(name);
  kxDestroyArray(properties);
  return 0;
}
