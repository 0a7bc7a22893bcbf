/* SPDX-License-Identifier: Apache-2.0 */
#ifndef BUNDLE_H
#define BUNDLE_H

/**
 * @file bundle.h
 * @brief Typed key-value container.
 *
 * A bundle maps texts to values: a text, bytes, an array of texts or an array of bytes. It keeps
 * its keys in the order in which they were added. What holds for every call:
 *
 * 1. Results. Each function sets the calling thread's last result (get_last_result()) to what it
 *    returns, or, when it returns no result, to the reason why it returned nothing.
 * 2. Errors. A null bundle, a null key or a null required output is an invalid parameter, checked
 *    before anything else. A call that fails changes nothing.
 * 3. Ownership. What is put in is copied. What comes out is borrowed: it belongs to the bundle and
 *    is valid until its key is deleted or the bundle freed. Do not free it.
 * 4. Outputs. The first output of a getter is required, the sizes that follow it may be null. A
 *    getter that fails sets its outputs to null and 0.
 * 5. Memory. At least eight bytes can be read at every text, every byte value and every element of
 *    an array that is not empty; those beyond the value are zero. A device does not guarantee this.
 * 6. Limits. A bundle has at most 32,768 keys, of 4 MiB together, and at most 262,144 slots in all
 *    its arrays; adding more is #BUNDLE_ERROR_OUT_OF_MEMORY. The limits bound the time that a
 * peer's bundle takes to read. A device has others.
 * 7. Threads. A bundle may be used by one thread at a time, different bundles by different threads.
 *
 * @code
 * bundle *b = bundle_create();
 * char *city = NULL;
 *
 * if (b != NULL && bundle_add_str(b, "city", "Seoul") == BUNDLE_ERROR_NONE
 *     && bundle_get_str(b, "city", &city) == BUNDLE_ERROR_NONE) {
 *   puts(city);
 * }
 * bundle_free(b);
 * @endcode
 */

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): for C, too */
#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @brief A container of keys and values. */
typedef struct bundle_s bundle;

/** @brief A byte of the printable text that bundle_encode() makes. */
typedef unsigned char bundle_raw;

/** @brief The value of one key, as an iterator gets it. */
typedef struct bundle_keyval_s bundle_keyval_t;

/**
 * @brief Called by bundle_foreach() for one key.
 * @remarks It may read the bundle and may delete the key it is called with, after which @a kv and
 *          @a key are invalid. It must not change the bundle in any other way, nor free it.
 * @param[in] key        The key; borrowed
 * @param[in] type       The type of its value, one of #bundle_type
 * @param[in] kv         Its value; borrowed. Cast the const away for bundle_keyval_get_type() and
 *                       its siblings, which change nothing
 * @param[in] user_data  What was given to bundle_foreach()
 */
typedef void (*bundle_iterator_t)(const char *key, const int type, const bundle_keyval_t *kv,
                                  void *user_data);

/** @brief The properties that the types are composed of. */
enum bundle_type_property {
  /** Several values under one key. */
  BUNDLE_TYPE_ARRAY = 0x0100,
  /** Of a fixed size. No type has it. */
  BUNDLE_TYPE_PRIMITIVE = 0x0200,
  /** Its size can be told from the value. */
  BUNDLE_TYPE_MEASURABLE = 0x0400
};

/** @brief The types of values. */
enum bundle_type {
  /** No type: the key is unknown. */
  BUNDLE_TYPE_NONE = -1,
  /** Any type. No value has it. */
  BUNDLE_TYPE_ANY = 0,
  /** A text. */
  BUNDLE_TYPE_STR = 1 | BUNDLE_TYPE_MEASURABLE,
  /** An array of texts. */
  BUNDLE_TYPE_STR_ARRAY = BUNDLE_TYPE_STR | BUNDLE_TYPE_ARRAY | BUNDLE_TYPE_MEASURABLE,
  /** Bytes. */
  BUNDLE_TYPE_BYTE = 2,
  /** An array of bytes. */
  BUNDLE_TYPE_BYTE_ARRAY = BUNDLE_TYPE_BYTE | BUNDLE_TYPE_ARRAY
};

/** @brief The results of the functions. */
typedef enum {
  /** Success. */
  BUNDLE_ERROR_NONE = TIZEN_ERROR_NONE,
  /** No memory. */
  BUNDLE_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
  /** A required argument is null, a length or size out of range, or the value of another type. */
  BUNDLE_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** The bundle does not have the key. */
  BUNDLE_ERROR_KEY_NOT_AVAILABLE = TIZEN_ERROR_KEY_NOT_AVAILABLE,
  /** The bundle has the key already. */
  BUNDLE_ERROR_KEY_EXISTS = -0x01180000 | 0x01
} bundle_error_e;

#pragma GCC visibility push(default)

/**
 * @brief Creates an empty bundle.
 * @return The bundle, to be released with bundle_free(); null on failure, with the last result
 *         #BUNDLE_ERROR_OUT_OF_MEMORY
 */
bundle *bundle_create(void);

/**
 * @brief Releases a bundle and everything borrowed from it.
 * @param[in] b  The bundle
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b is null
 */
int bundle_free(bundle *b);

/**
 * @brief Copies a bundle with all its values.
 * @param[in] b_from  The bundle
 * @return The copy, to be released with bundle_free(); null on failure, with the last result
 *         #BUNDLE_ERROR_INVALID_PARAMETER when @a b_from is null, or #BUNDLE_ERROR_OUT_OF_MEMORY
 */
bundle *bundle_dup(bundle *b_from);

/**
 * @brief Adds a text.
 * @param[in] b    The bundle
 * @param[in] key  The key, which must not be empty; copied
 * @param[in] str  The text, which may be empty; copied
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a str is null, or @a key is empty
 * @retval #BUNDLE_ERROR_KEY_EXISTS         The bundle has the key: its value is kept
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory, or the bundle has reached a limit
 */
int bundle_add_str(bundle *b, const char *key, const char *str);

/**
 * @brief Adds bytes.
 * @param[in] b     The bundle
 * @param[in] key   The key, which must not be empty; copied
 * @param[in] byte  The bytes; copied
 * @param[in] size  How many, at least one
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a byte is null, @a key is empty, or
 *                                          @a size is 0
 * @retval #BUNDLE_ERROR_KEY_EXISTS         The bundle has the key: its value is kept
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory, or the bundle has reached a limit
 */
int bundle_add_byte(bundle *b, const char *key, const void *byte, const size_t size);

/**
 * @brief Adds an array of texts.
 * @param[in] b          The bundle
 * @param[in] key        The key, which must not be empty; copied
 * @param[in] str_array  The texts; copied. Null for @a len empty slots; a null text is an empty
 *                       slot, which is not the same as an empty text
 * @param[in] len        How many, at least one
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b or @a key is null, @a key is empty, or @a len is 0
 *                                          or negative
 * @retval #BUNDLE_ERROR_KEY_EXISTS         The bundle has the key: its value is kept
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory, or the bundle has reached a limit
 */
int bundle_add_str_array(bundle *b, const char *key, const char **str_array, const int len);

/**
 * @brief Adds an array of bytes whose slots are empty.
 * @param[in] b    The bundle
 * @param[in] key  The key, which must not be empty; copied
 * @param[in] len  The number of slots, at least one
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b or @a key is null, @a key is empty, or @a len is 0
 * @retval #BUNDLE_ERROR_KEY_EXISTS         The bundle has the key: its value is kept
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory
 * @see bundle_set_byte_array_element()
 */
int bundle_add_byte_array(bundle *b, const char *key, const unsigned int len);

/**
 * @brief Sets an element of an array of bytes, replacing the one before.
 * @details What was borrowed from the slot before is invalid.
 * @param[in] b     The bundle
 * @param[in] key   The key of the array
 * @param[in] idx   The slot, counted from 0
 * @param[in] byte  The bytes; copied
 * @param[in] size  How many, from 1 to UINT_MAX
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a byte is null, @a size or @a idx
 *                                          is out of range, or the value is no array of bytes
 * @retval #BUNDLE_ERROR_KEY_NOT_AVAILABLE  The bundle does not have the key
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory
 */
int bundle_set_byte_array_element(bundle *b, const char *key, const unsigned int idx,
                                  const void *byte, const size_t size);

/**
 * @brief Gets a text.
 * @param[in]  b    The bundle
 * @param[in]  key  The key
 * @param[out] str  The text; borrowed. Null on failure
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a str is null, or the value is no text
 * @retval #BUNDLE_ERROR_KEY_NOT_AVAILABLE  The bundle does not have the key
 */
int bundle_get_str(bundle *b, const char *key, char **str);

/**
 * @brief Gets bytes.
 * @param[in]  b     The bundle
 * @param[in]  key   The key
 * @param[out] byte  The bytes; borrowed. Null on failure
 * @param[out] size  How many, or 0 on failure; may be null
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a byte is null, or the value is not
 *                                          bytes
 * @retval #BUNDLE_ERROR_KEY_NOT_AVAILABLE  The bundle does not have the key
 */
int bundle_get_byte(bundle *b, const char *key, void **byte, size_t *size);

/**
 * @brief Gets an array of texts.
 * @param[in]  b    The bundle
 * @param[in]  key  The key
 * @param[out] len  The number of slots, or 0 on failure; may be null
 * @return The slots, null where empty; borrowed. Null on failure, with the last result
 *         #BUNDLE_ERROR_INVALID_PARAMETER when @a b or @a key is null or the value is no array of
 *         texts, or #BUNDLE_ERROR_KEY_NOT_AVAILABLE when the bundle does not have the key
 */
const char **bundle_get_str_array(bundle *b, const char *key, int *len);

/**
 * @brief Gets an array of bytes.
 * @param[in]  b                   The bundle
 * @param[in]  key                 The key
 * @param[out] byte_array          The slots, null where empty; borrowed. Null on failure
 * @param[out] len                 The number of slots, or 0 on failure; may be null
 * @param[out] array_element_size  For each slot the number of its bytes, 0 where empty; borrowed.
 *                                 Null on failure; may be null
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a key or @a byte_array is null, or the value is
 *                                          no array of bytes
 * @retval #BUNDLE_ERROR_KEY_NOT_AVAILABLE  The bundle does not have the key
 */
int bundle_get_byte_array(bundle *b, const char *key, void ***byte_array, unsigned int *len,
                          unsigned int **array_element_size);

/**
 * @brief Gets a text as the return value.
 * @param[in] b    The bundle
 * @param[in] key  The key
 * @return The text; borrowed. Null on failure, with the last result that bundle_get_str() has
 */
const char *bundle_get_val(bundle *b, const char *key);

/**
 * @brief Gets the type of a value.
 * @param[in] b    The bundle
 * @param[in] key  The key
 * @return One of #bundle_type; #BUNDLE_TYPE_NONE on failure, with the last result
 *         #BUNDLE_ERROR_INVALID_PARAMETER when @a b or @a key is null, or
 *         #BUNDLE_ERROR_KEY_NOT_AVAILABLE when the bundle does not have the key
 */
int bundle_get_type(bundle *b, const char *key);

/**
 * @brief Gets the number of keys.
 * @param[in] b  The bundle
 * @return The number; 0 for null, with the last result #BUNDLE_ERROR_INVALID_PARAMETER
 */
int bundle_get_count(bundle *b);

/**
 * @brief Deletes a key and its value.
 * @param[in] b    The bundle
 * @param[in] key  The key
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b or @a key is null
 * @retval #BUNDLE_ERROR_KEY_NOT_AVAILABLE  The bundle does not have the key
 */
int bundle_del(bundle *b, const char *key);

/**
 * @brief Calls an iterator for each key, in the order in which they were added.
 * @details The last result afterwards is #BUNDLE_ERROR_NONE, or #BUNDLE_ERROR_INVALID_PARAMETER
 *          when @a b or @a iter is null and nothing was called. An exception that the iterator
 *          throws passes through.
 * @param[in] b          The bundle
 * @param[in] iter       The iterator
 * @param[in] user_data  Given to the iterator unchanged
 */
void bundle_foreach(bundle *b, bundle_iterator_t iter, void *user_data);

/**
 * @brief Gets the type of a value.
 * @param[in] kv  The value
 * @return One of #bundle_type; -1 for null, with the last result #BUNDLE_ERROR_INVALID_PARAMETER
 */
int bundle_keyval_get_type(bundle_keyval_t *kv);

/**
 * @brief Tells whether a value is an array.
 * @param[in] kv  The value
 * @return 1 or 0; -1 for null, with the last result #BUNDLE_ERROR_INVALID_PARAMETER
 */
int bundle_keyval_type_is_array(bundle_keyval_t *kv);

/**
 * @brief Gets a text or bytes.
 * @param[in]  kv    The value
 * @param[out] val   The text or the bytes; borrowed. Null on failure
 * @param[out] size  The number of bytes, which counts the NUL of a text, or 0 on failure; may be
 *                   null
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a kv or @a val is null, or the value is an array
 */
int bundle_keyval_get_basic_val(bundle_keyval_t *kv, void **val, size_t *size);

/**
 * @brief Gets an array.
 * @param[in]  kv               The value
 * @param[out] array_val        The slots, null where empty; borrowed. Null on failure
 * @param[out] array_len        The number of slots, or 0 on failure; may be null
 * @param[out] array_item_size  For each slot the number of its bytes, which counts the NUL of a
 *                              text, and 0 where empty; borrowed. Null on failure; may be null
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a kv or @a array_val is null, or the value is no array
 */
int bundle_keyval_get_array_val(bundle_keyval_t *kv, void ***array_val, unsigned int *array_len,
                                size_t **array_item_size);

/**
 * @brief Encodes a bundle as printable text: digits and the letters a to f.
 * @details Equal bundles have equal texts. The text can be decoded on machines of the same byte
 *          order.
 * @param[in]  b    The bundle
 * @param[out] r    The text with a NUL, to be released with free(); untouched on failure
 * @param[out] len  Its size in bytes, which counts the NUL; untouched on failure
 * @retval #BUNDLE_ERROR_NONE               Success
 * @retval #BUNDLE_ERROR_INVALID_PARAMETER  @a b, @a r or @a len is null
 * @retval #BUNDLE_ERROR_OUT_OF_MEMORY      No memory, or the text would not fit an int: the values
 *                                          together have almost 1 GiB
 */
int bundle_encode(bundle *b, bundle_raw **r, int *len);

/**
 * @brief Decodes the text of bundle_encode().
 * @param[in] r          The text
 * @param[in] data_size  Its size in bytes, with or without the NUL
 * @return The bundle, to be released with bundle_free(); null for anything that bundle_encode()
 *         cannot have made, with the last result #BUNDLE_ERROR_INVALID_PARAMETER, or without
 *         memory, with #BUNDLE_ERROR_OUT_OF_MEMORY
 */
bundle *bundle_decode(const bundle_raw *r, const int data_size);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
