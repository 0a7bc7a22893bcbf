/* SPDX-License-Identifier: Apache-2.0 */
#ifndef RPC_PORT_PARCEL_H
#define RPC_PORT_PARCEL_H

/**
 * @file rpc-port-parcel.h
 * @brief Parcels: the messages that travel over ports.
 *
 * A parcel is a row of fields behind a header. Fields are written at the end and read from the
 * front, in the same order and with the same types: a field does not know its own type. Conventions
 * that hold for every call:
 *
 * 1. A parcel and its header are used by one thread at a time. Sending, and creating from a port,
 *    belong to the main loop's thread.
 * 2. A null handle or a null argument is #RPC_PORT_ERROR_INVALID_PARAMETER.
 * 3. A write that fails writes nothing. #RPC_PORT_ERROR_IO_ERROR: the parcel would become longer
 *    than a message may be, 64 MiB.
 * 4. A read that fails leaves the output and the position as they are. #RPC_PORT_ERROR_IO_ERROR:
 *    the parcel ends before the field does, or what lies there is no such field.
 */

#include <bundle.h>
#include <rpc-port.h>
#include <stdbool.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Strict C99 hides the one in <time.h>. */
struct timespec;

/** @brief A parcel. */
typedef void *rpc_port_parcel_h;
/** @brief The header of a parcel, valid as long as the parcel. */
typedef void *rpc_port_parcel_header_h;

/** @brief How an application's own type is written to a parcel and read from it. */
typedef struct {
  void (*to)(rpc_port_parcel_h h, void *data);   /**< Writes @a data, field by field */
  void (*from)(rpc_port_parcel_h h, void *data); /**< Reads it, in the same order */
} rpc_port_parcelable_t;

/**
 * @brief Creates an empty parcel.
 * @param[out] h The parcel, to be released with rpc_port_parcel_destroy()
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_create(rpc_port_parcel_h *h);

/**
 * @brief Takes the next parcel from a port.
 * @details On a proxy's main port it waits for one, ten seconds at most; on the other ports it has
 *          to be there, as it is when an event says so.
 * @param[out] h    The parcel, to be released with rpc_port_parcel_destroy()
 * @param[in]  port The port
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a port is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          No parcel is there, or what is there is none; in the
 *                                           latter case the other side is disconnected
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_create_from_port(rpc_port_parcel_h *h, rpc_port_h port);

/**
 * @brief Creates a parcel from bytes that rpc_port_parcel_get_raw() gave.
 * @param[out] h    The parcel, to be released with rpc_port_parcel_destroy()
 * @param[in]  raw  The bytes, which are copied
 * @param[in]  size How many
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a raw is NULL, or the bytes begin with no
 *                                           parcel's header
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_create_from_raw(rpc_port_parcel_h *h, const void *raw, unsigned int size);

/**
 * @brief Sends the parcel: all of it or nothing.
 * @details What cannot be sent at once is sent by the loop; the parcel may be written to, sent
 * again or destroyed in the meantime.
 * @param[in] h    The parcel
 * @param[in] port The port
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a port is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The connection has ended, or ends now because the other
 *                                           side has left too much unread
 */
int rpc_port_parcel_send(rpc_port_parcel_h h, rpc_port_h port);

/**
 * @brief Releases a parcel.
 * @param[in] h The parcel
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 */
int rpc_port_parcel_destroy(rpc_port_parcel_h h);

/**
 * @brief Writes a byte.
 * @param[in] h The parcel
 * @param[in] b What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_byte(rpc_port_parcel_h h, char b);

/**
 * @brief Writes a 16-bit integer.
 * @param[in] h The parcel
 * @param[in] i What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_int16(rpc_port_parcel_h h, short i);

/**
 * @brief Writes a 32-bit integer.
 * @param[in] h The parcel
 * @param[in] i What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_int32(rpc_port_parcel_h h, int i);

/**
 * @brief Writes a 64-bit integer.
 * @param[in] h The parcel
 * @param[in] i What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_int64(rpc_port_parcel_h h, long long i);

/**
 * @brief Writes a single-precision number.
 * @param[in] h The parcel
 * @param[in] f What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_float(rpc_port_parcel_h h, float f);

/**
 * @brief Writes a double-precision number.
 * @param[in] h The parcel
 * @param[in] d What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_double(rpc_port_parcel_h h, double d);

/**
 * @brief Writes a truth value.
 * @param[in] h The parcel
 * @param[in] b What is written
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_bool(rpc_port_parcel_h h, bool b);

/**
 * @brief Writes a text, with its NUL.
 * @param[in] h   The parcel
 * @param[in] str The text
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a str is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_string(rpc_port_parcel_h h, const char *str);

/**
 * @brief Writes a bundle with all its entries.
 * @param[in] h The parcel
 * @param[in] b The bundle, which stays the caller's
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a b is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_bundle(rpc_port_parcel_h h, bundle *b);

/**
 * @brief Writes how many elements follow.
 * @param[in] h     The parcel
 * @param[in] count The number, not negative
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL, or @a count is negative
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_write_array_count(rpc_port_parcel_h h, int count);

/**
 * @brief Has an application's own type written.
 * @param[in] h          The parcel
 * @param[in] parcelable The type; its @a to is called with @a h and @a data
 * @param[in] data       What is written; may be NULL where @a to takes that
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              @a to has been called; its own writes are not checked
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a parcelable is NULL, or has no @a to
 */
int rpc_port_parcel_write(rpc_port_parcel_h h, rpc_port_parcelable_t *parcelable, void *data);

/**
 * @brief Writes bytes as they are, without their number.
 * @param[in] h    The parcel
 * @param[in] buf  The bytes
 * @param[in] size How many, at least one
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a buf is NULL, or @a size is 0
 * @retval #RPC_PORT_ERROR_IO_ERROR          The parcel would become too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_burst_write(rpc_port_parcel_h h, const unsigned char *buf, unsigned int size);

/**
 * @brief Reads a byte.
 * @param[in]  h The parcel
 * @param[out] b What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a b is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_byte(rpc_port_parcel_h h, char *b);

/**
 * @brief Reads a 16-bit integer.
 * @param[in]  h The parcel
 * @param[out] i What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a i is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_int16(rpc_port_parcel_h h, short *i);

/**
 * @brief Reads a 32-bit integer.
 * @param[in]  h The parcel
 * @param[out] i What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a i is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_int32(rpc_port_parcel_h h, int *i);

/**
 * @brief Reads a 64-bit integer.
 * @param[in]  h The parcel
 * @param[out] i What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a i is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_int64(rpc_port_parcel_h h, long long *i);

/**
 * @brief Reads a single-precision number.
 * @param[in]  h The parcel
 * @param[out] f What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a f is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_float(rpc_port_parcel_h h, float *f);

/**
 * @brief Reads a double-precision number.
 * @param[in]  h The parcel
 * @param[out] d What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a d is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there
 */
int rpc_port_parcel_read_double(rpc_port_parcel_h h, double *d);

/**
 * @brief Reads a truth value.
 * @param[in]  h The parcel
 * @param[out] b What is read
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a b is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there, or is neither true nor false
 */
int rpc_port_parcel_read_bool(rpc_port_parcel_h h, bool *b);

/**
 * @brief Reads a text.
 * @param[in]  h   The parcel
 * @param[out] str A copy, to be released with free()
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a str is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there, or is no text
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for the copy
 */
int rpc_port_parcel_read_string(rpc_port_parcel_h h, char **str);

/**
 * @brief Reads a bundle.
 * @param[in]  h The parcel
 * @param[out] b The bundle, to be released with bundle_free()
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a b is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there, or is no bundle
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for the bundle
 */
int rpc_port_parcel_read_bundle(rpc_port_parcel_h h, bundle **b);

/**
 * @brief Reads how many elements follow. Whether they do, their own reads will tell.
 * @param[in]  h     The parcel
 * @param[out] count The number
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a count is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The field is not there, or is negative
 */
int rpc_port_parcel_read_array_count(rpc_port_parcel_h h, int *count);

/**
 * @brief Has an application's own type read.
 * @param[in]  h          The parcel
 * @param[in]  parcelable The type; its @a from is called with @a h and @a data
 * @param[out] data       What is read; may be NULL where @a from takes that
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              @a from has been called; its own reads are not checked
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a parcelable is NULL, or has no @a from
 */
int rpc_port_parcel_read(rpc_port_parcel_h h, rpc_port_parcelable_t *parcelable, void *data);

/**
 * @brief Reads bytes as they are.
 * @param[in]  h    The parcel
 * @param[out] buf  Where the bytes go
 * @param[in]  size How many, at least one
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a buf is NULL, or @a size is 0
 * @retval #RPC_PORT_ERROR_IO_ERROR          Fewer are left
 */
int rpc_port_parcel_burst_read(rpc_port_parcel_h h, unsigned char *buf, unsigned int size);

/**
 * @brief Gets the parcel's header, which travels with it.
 * @param[in]  h      The parcel
 * @param[out] header The header, owned by the parcel
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL
 */
int rpc_port_parcel_get_header(rpc_port_parcel_h h, rpc_port_parcel_header_h *header);

/**
 * @brief Sets the header's tag, a text of the application's own meaning.
 * @param[in] header The header
 * @param[in] tag    The tag, at most 4096 bytes
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL, or @a tag is too long
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_header_set_tag(rpc_port_parcel_header_h header, const char *tag);

/**
 * @brief Gets the header's tag.
 * @param[in]  header The header
 * @param[out] tag    A copy, to be released with free(); empty when none was set
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for the copy
 */
int rpc_port_parcel_header_get_tag(rpc_port_parcel_header_h header, char **tag);

/**
 * @brief Sets the header's sequence number, a number of the application's own meaning.
 * @param[in] header  The header
 * @param[in] seq_num The number
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a header is NULL
 */
int rpc_port_parcel_header_set_seq_num(rpc_port_parcel_header_h header, int seq_num);

/**
 * @brief Gets the header's sequence number.
 * @param[in]  header  The header
 * @param[out] seq_num The number; 0 when none was set
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL
 */
int rpc_port_parcel_header_get_seq_num(rpc_port_parcel_header_h header, int *seq_num);

/**
 * @brief Gets the time at which the parcel was created, by its sender if it has travelled.
 * @param[in]  header    The header
 * @param[out] timestamp The time on CLOCK_MONOTONIC_RAW, which all processes share
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL
 */
int rpc_port_parcel_header_get_timestamp(rpc_port_parcel_header_h header,
                                         struct timespec *timestamp);

/**
 * @brief Gets the whole parcel, header and fields, as bytes.
 * @details Whatever has been read of it. The bytes are for rpc_port_parcel_create_from_raw() on the
 *          same machine.
 * @param[in]  h    The parcel
 * @param[out] raw  The bytes, owned by the parcel and valid until the next call or its end
 * @param[out] size How many
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_parcel_get_raw(rpc_port_parcel_h h, void **raw, unsigned int *size);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
