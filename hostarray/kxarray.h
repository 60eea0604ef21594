/* SPDX-License-Identifier: MIT */
#ifndef HOSTARRAY_KXARRAY_H
#define HOSTARRAY_KXARRAY_H

/*
 * The host's arrays, as seen through a C interface.
 *
 * An array has a class and dimensions; elements are in column-major ("linear") order, and indices
 * count from 0. Whoever creates an array owns it until it is stored in a struct field or a cell
 * (which then owns it) or handed out as an output. Wrong use (an index past the end, a field of
 * something that is not a struct) raises a host error, which is the C++ exception
 * matrix::HostError.
 */

#include <stddef.h>

#ifdef __cplusplus
#include <uchar.h>
extern "C" {
#else
#include <stdbool.h>
#include <uchar.h>
#endif

#if defined(__GNUC__)
#define KX_API __attribute__((visibility("default")))
#else
#define KX_API
#endif

typedef struct kxArray kxArray;

typedef enum kxClass { kxSTRUCT_CLASS, kxCELL_CLASS, kxCHAR_CLASS, kxDOUBLE_CLASS } kxClass;

/* Any array. kxDestroyArray(NULL) does nothing; an array that something else owns is refused. */
KX_API kxClass kxGetClass(const kxArray* array);
KX_API bool kxIsStruct(const kxArray* array);
KX_API bool kxIsCell(const kxArray* array);
KX_API bool kxIsChar(const kxArray* array);
KX_API bool kxIsDouble(const kxArray* array);
KX_API size_t kxGetNumberOfDimensions(const kxArray* array);
/* As many sizes as there are dimensions. The array owns them. */
KX_API const size_t* kxGetDimensions(const kxArray* array);
KX_API size_t kxGetNumberOfElements(const kxArray* array);
KX_API bool kxIsEmpty(const kxArray* array);
KX_API void kxDestroyArray(kxArray* array);

/* The element array(k), k counting from 1 and given as a double scalar, as an array of its own: a
 * copy that belongs to the host's current call, which frees it when the gateway returns. Outside of
 * any call it belongs to the caller. Several subscripts are one a dimension; the last one runs over
 * all dimensions that are left. */
KX_API kxArray* kxSubscriptedReference(const kxArray* array, size_t count,
                                       kxArray* const* subscripts);

/* Text: UTF-16 code units. `text` is null-terminated and becomes one row (1-by-0 when empty). */
KX_API kxArray* kxCreateString_UTF16(const char16_t* text);
/* A char array of any shape, all zero. */
KX_API kxArray* kxCreateCharArray(size_t dimensions, const size_t* sizes);
KX_API char16_t* kxGetChars(kxArray* array);
KX_API const char16_t* kxGetConstChars(const kxArray* array);

/* Numbers. kxGetDoubles returns the elements, which may be modified in place. */
KX_API kxArray* kxCreateDoubleScalar(double value);
KX_API kxArray* kxCreateDoubleArray(size_t dimensions, const size_t* sizes);
KX_API double* kxGetDoubles(kxArray* array);
KX_API const double* kxGetConstDoubles(const kxArray* array);

/* Structs: every element has the same ordered fields, in linear order. One dimension {N} makes a
 * 1-by-N array, here and for the other classes.
 * Setting a field destroys what it held (setting the same value again does nothing); NULL empties
 * it. kxGetField returns a borrowed array, or NULL for an empty or unknown field. */
KX_API kxArray* kxCreateStructArray(size_t dimensions, const size_t* sizes, size_t fields,
                                    const char* const* names);
KX_API void kxSetField(kxArray* array, size_t index, const char* name, kxArray* value);
KX_API kxArray* kxGetField(const kxArray* array, size_t index, const char* name);
KX_API size_t kxGetNumberOfFields(const kxArray* array);
KX_API const char* kxGetFieldName(const kxArray* array, size_t field);

/* Cells; the same rules of ownership. A cell that was never set holds NULL. */
KX_API kxArray* kxCreateCellArray(size_t dimensions, const size_t* sizes);
KX_API void kxSetCell(kxArray* array, size_t index, kxArray* value);
KX_API kxArray* kxGetCell(const kxArray* array, size_t index);

#ifdef __cplusplus
}
#endif

#endif /* HOSTARRAY_KXARRAY_H */
