/* SPDX-License-Identifier: MIT */
/* A host in C: makes arrays of every class and reads them back. Exits with the line that failed. */
#include <stdio.h>

#include "gateway/FunctionTable.h"
#include "hostarray/kxarray.h"

#define CHECK(condition)                                      \
  do {                                                        \
    if (!(condition)) {                                       \
      fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
      return 1;                                               \
    }                                                         \
  } while (0)

static kxArray* make_record(void) {
  const size_t one = 1;
  const size_t row[2] = {1, 2};
  const char* names[] = {"title", "values"};
  kxArray* record = kxCreateStructArray(1, &one, 2, names);
  kxArray* values = kxCreateCellArray(2, row);
  kxSetCell(values, 0, kxCreateDoubleScalar(1.5));
  kxSetField(record, 0, "title", kxCreateString_UTF16(u"Gr\u00fc\u00dfe"));
  kxSetField(record, 0, "values", values);
  return record;
}

static int check_record(const kxArray* record) {
  const kxArray* title = kxGetField(record, 0, "title");
  const kxArray* values = kxGetField(record, 0, "values");
  CHECK(kxIsStruct(record) && kxGetNumberOfElements(record) == 1);
  CHECK(kxGetNumberOfFields(record) == 2);
  CHECK(kxGetField(record, 0, "unknown") == NULL);
  CHECK(kxIsChar(title) && kxGetNumberOfElements(title) == 5);
  CHECK(kxGetConstChars(title)[2] == 0x00fc && kxGetConstChars(title)[5] == 0);
  CHECK(kxGetClass(values) == kxCELL_CLASS && kxGetDimensions(values)[1] == 2);
  CHECK(*kxGetConstDoubles(kxGetCell(values, 0)) == 1.5);
  CHECK(kxGetCell(values, 1) == NULL);
  return 0;
}

int main(void) {
  kxArray* record = make_record();
  kxArray* subscript = kxCreateDoubleScalar(1.0);
  kxArray* copy = kxSubscriptedReference(record, 1, &subscript);
  const int original = check_record(record);
  kxDestroyArray(record);
  const int copied = check_record(copy);
  kxDestroyArray(copy);
  kxDestroyArray(subscript);
  kxDestroyArray(NULL);
  CHECK(sizeof(HostFunctionTable) == 32);
  return original != 0 || copied != 0;
}
