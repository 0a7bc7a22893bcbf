/* SPDX-License-Identifier: Apache-2.0 */
#ifndef RPC_PORT_H
#define RPC_PORT_H

/**
 * @file rpc-port.h
 * @brief Ports between applications: a stub listens, proxies connect.
 *
 * A connection has two ports. Requests and their replies travel on the main port, messages that
 * the stub sends unasked on the callback port. Conventions that hold for every call:
 *
 * 1. Thread. Everything is called on the thread that runs the Ecore main loop, and every event is
 *    raised there. Creating a stub or a proxy initialises Ecore if necessary, and destroying the
 *    last one shuts it down, before or after the application does so itself.
 * 2. Events come from the loop, never from inside a call; the one exception is the connected event
 *    of rpc_port_proxy_connect_sync(), also that of a stub in the same process. All handlers of an
 *    event are called in the order in which they were added.
 * 3. A handler may do anything: send, disconnect, connect, destroy the stub or proxy that it was
 *    called from, run the loop, throw a C++ exception (which comes out of the loop). Texts that it
 *    is given are lent for the call.
 * 4. No call blocks, apart from rpc_port_proxy_connect_sync() and reads from a proxy's main port,
 *    which wait for a bounded time. What a peer does not take at once is queued; a peer that does
 *    not read what it is sent is disconnected when the queue is full.
 * 5. Errors. A null handle, a null argument that is not said to be optional, and the handle of a
 *    stub or proxy that has been destroyed are #RPC_PORT_ERROR_INVALID_PARAMETER. A port whose
 *    connection has ended is #RPC_PORT_ERROR_IO_ERROR. Outputs are written on success only.
 * 6. A port is owned by its connection and ends with it, or before it by rpc_port_disconnect(). The
 *    handle of an ended port is refused for good.
 * 7. A forked child has none of its parent's ports and hears nothing of them, but can make stubs
 *    and proxies of its own.
 */

#include <stdbool.h>
#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief What the functions return. */
typedef enum {
  RPC_PORT_ERROR_NONE = TIZEN_ERROR_NONE,                   /**< Success */
  RPC_PORT_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR,           /**< The other side cannot be reached */
  RPC_PORT_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY, /**< There is no memory for it */
  RPC_PORT_ERROR_PERMISSION_DENIED =
      TIZEN_ERROR_PERMISSION_DENIED, /**< The ports' directory is not the user's alone */
  RPC_PORT_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER /**< An argument is invalid */
} rpc_port_error_e;

/** @brief The two ports of a connection. */
typedef enum {
  RPC_PORT_PORT_MAIN,    /**< Requests, and the replies to them */
  RPC_PORT_PORT_CALLBACK /**< What the stub sends of its own accord */
} rpc_port_port_type_e;

/** @brief One port of a connection. */
typedef void *rpc_port_h;
/** @brief The side that connects. */
typedef void *rpc_port_proxy_h;
/** @brief The side that listens. */
typedef void *rpc_port_stub_h;

/**
 * @brief Reads bytes that the other side has written with rpc_port_write().
 * @details All of @a size or none. On a proxy's main port it waits for them, ten seconds at most;
 *          on the other ports the bytes have to be there, as they are when an event says so. The
 *          pieces in which the bytes were written need not be those in which they are read.
 * @param[in]  h    The port
 * @param[out] buf  Where the bytes go
 * @param[in]  size How many, at least one
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a buf is NULL, or @a size is 0
 * @retval #RPC_PORT_ERROR_IO_ERROR          Fewer bytes are there, a parcel comes first, or the
 *                                           connection has ended
 * @see rpc_port_parcel_create_from_port()
 */
int rpc_port_read(rpc_port_h h, void *buf, unsigned int size);

/**
 * @brief Writes bytes to the other side.
 * @details All of @a size or none; what cannot be sent at once is sent by the loop.
 * @param[in] h    The port
 * @param[in] buf  The bytes
 * @param[in] size How many, from 1 to 64 MiB
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a buf is NULL, or @a size is 0
 * @retval #RPC_PORT_ERROR_IO_ERROR          The connection has ended, or ends now because the other
 *                                           side has left too much unread; or @a size is too large
 */
int rpc_port_write(rpc_port_h h, const void *buf, unsigned int size);

/**
 * @brief Ends one port on both sides; its handle is stale afterwards.
 * @details The other port of the connection goes on while it is used. The connection ends when that
 *          port is disconnected too, when nothing has travelled on it for one second, or with the
 *          proxy or the stub. Both sides then get their disconnected event, this side from a later
 *          turn of the loop. What the system has taken still reaches the other side; what waits in
 *          this process for this port, to be sent or to be read, is dropped.
 * @param[in] h The port
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The port has ended before
 */
int rpc_port_disconnect(rpc_port_h h);

/**
 * @brief Shares a file of the application's private folder with the other side.
 * @details Without effect on a desktop, where the files of one user are open to all its processes.
 * @param[in] port The port
 * @param[in] path The file
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a port or @a path is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The connection has ended
 */
int rpc_port_set_private_sharing(rpc_port_h port, const char *path);

/**
 * @brief Shares several files; see rpc_port_set_private_sharing().
 * @param[in] port  The port
 * @param[in] paths The files
 * @param[in] size  How many, at least one
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a port or @a paths is NULL, or @a size is 0
 * @retval #RPC_PORT_ERROR_IO_ERROR          The connection has ended
 */
int rpc_port_set_private_sharing_array(rpc_port_h port, const char *paths[], unsigned int size);

/**
 * @brief Takes back what has been shared; see rpc_port_set_private_sharing().
 * @param[in] port The port
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a port is NULL
 * @retval #RPC_PORT_ERROR_IO_ERROR          The connection has ended
 */
int rpc_port_unset_private_sharing(rpc_port_h port);

/**
 * @brief Called when a connection of the proxy is made.
 * @param[in] receiver  The id of the application connected to
 * @param[in] port_name The name of its port
 * @param[in] port      The new connection's main port
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_proxy_connected_event_cb)(const char *receiver, const char *port_name,
                                                  rpc_port_h port, void *user_data);

/**
 * @brief Called once when a connection of the proxy has ended, by either side.
 * @details Its ports are dead by then, and everything that had arrived has been handed out.
 * @param[in] receiver  The id of the application that was connected to
 * @param[in] port_name The name of its port
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_proxy_disconnected_event_cb)(const char *receiver, const char *port_name,
                                                     void *user_data);

/**
 * @brief Called when rpc_port_proxy_connect() has come to nothing.
 * @details Nobody listens, the stub refuses, or it has not answered within ten seconds.
 * @param[in] receiver  The id of the application asked for
 * @param[in] port_name The name of its port
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_proxy_rejected_event_cb)(const char *receiver, const char *port_name,
                                                 void *user_data);

/**
 * @brief Called when a message lies ready on the callback port.
 * @details To be taken with rpc_port_parcel_create_from_port() or rpc_port_read(). A message that
 *          is left is announced again in a later turn of the loop. The main port raises no event.
 * @param[in] receiver  The id of the application connected to
 * @param[in] port_name The name of its port
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_proxy_received_event_cb)(const char *receiver, const char *port_name,
                                                 void *user_data);

/**
 * @brief Creates a proxy.
 * @param[out] h The proxy, to be released with rpc_port_proxy_destroy()
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_create(rpc_port_proxy_h *h);

/**
 * @brief Ends the proxy's connections and releases it. None of its events follows.
 * @param[in] h The proxy
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL or has been destroyed
 */
int rpc_port_proxy_destroy(rpc_port_proxy_h h);

/**
 * @brief Begins to connect; the outcome comes as a connected or a rejected event.
 * @details A proxy may connect several times, also to different ports: each is a connection of its
 *          own, with an instance of its own on the stub's side.
 * @param[in] h     The proxy
 * @param[in] appid The id of the application to connect to: a file name of at most 255 bytes
 * @param[in] port  The name of its port: a file name of at most 80 bytes
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Begun
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL or no such name
 * @retval #RPC_PORT_ERROR_IO_ERROR          Ecore cannot be initialised
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_connect(rpc_port_proxy_h h, const char *appid, const char *port);

/**
 * @brief Connects, and waits for the outcome, ten seconds at most.
 * @details The connected event is raised before it returns; a failure is only returned. The loop
 *          does not run meanwhile. A stub of the same process takes the connection at once, and
 *          raises its connected event from inside this call as well.
 * @param[in] h     The proxy
 * @param[in] appid The id of the application to connect to: a file name of at most 255 bytes
 * @param[in] port  The name of its port: a file name of at most 80 bytes
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Connected
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL or no such name
 * @retval #RPC_PORT_ERROR_IO_ERROR          Nobody listens, the stub refuses or does not answer
 * @retval #RPC_PORT_ERROR_PERMISSION_DENIED The ports' directory is not the user's alone
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_connect_sync(rpc_port_proxy_h h, const char *appid, const char *port);

/**
 * @brief Adds a handler of the connected event.
 * @param[in] h         The proxy
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_add_connected_event_cb(rpc_port_proxy_h h, rpc_port_proxy_connected_event_cb cb,
                                          void *user_data);

/**
 * @brief Adds a handler of the disconnected event.
 * @param[in] h         The proxy
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_add_disconnected_event_cb(rpc_port_proxy_h h,
                                             rpc_port_proxy_disconnected_event_cb cb,
                                             void *user_data);

/**
 * @brief Adds a handler of the rejected event.
 * @param[in] h         The proxy
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_add_rejected_event_cb(rpc_port_proxy_h h, rpc_port_proxy_rejected_event_cb cb,
                                         void *user_data);

/**
 * @brief Adds a handler of the received event.
 * @details Messages that came before the first one was added have waited for it.
 * @param[in] h         The proxy
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_proxy_add_received_event_cb(rpc_port_proxy_h h, rpc_port_proxy_received_event_cb cb,
                                         void *user_data);

/**
 * @brief Gets a port of the proxy's newest connection.
 * @param[in]  h    The proxy
 * @param[in]  type Which of the two
 * @param[out] port The port, owned by its connection
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a port is NULL, @a h has been destroyed, or
 *                                           @a type is none of the two
 * @retval #RPC_PORT_ERROR_IO_ERROR          The proxy has no connection, or has disconnected this
 *                                           port of it
 */
int rpc_port_proxy_get_port(rpc_port_proxy_h h, rpc_port_port_type_e type, rpc_port_h *port);

/**
 * @brief Called when a proxy has connected.
 * @param[in] sender    The id that the proxy's application gives itself
 * @param[in] instance  The name of this connection, different from all others
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_stub_connected_event_cb)(const char *sender, const char *instance,
                                                 void *user_data);

/**
 * @brief Called once when a connection has ended, by either side.
 * @details Its ports are dead by then, and everything that had arrived has been handed out, unless
 *          this side has ended it.
 * @param[in] sender    The id that the proxy's application gave itself
 * @param[in] instance  The name of the connection
 * @param[in] user_data What was given with the handler
 */
typedef void (*rpc_port_stub_disconnected_event_cb)(const char *sender, const char *instance,
                                                    void *user_data);

/**
 * @brief Called when a message lies ready on a port.
 * @details To be taken with rpc_port_parcel_create_from_port() or rpc_port_read(). A message that
 *          is left is announced again in a later turn of the loop.
 * @param[in] sender    The id that the proxy's application gives itself
 * @param[in] instance  The name of the connection
 * @param[in] port      The port with the message, which is also the one to reply on
 * @param[in] user_data What was given with the handler
 * @return 0, or anything else to end this connection
 */
typedef int (*rpc_port_stub_received_event_cb)(const char *sender, const char *instance,
                                               rpc_port_h port, void *user_data);

/**
 * @brief Creates a stub. It does not listen yet.
 * @param[out] h         The stub, to be released with rpc_port_stub_destroy()
 * @param[in]  port_name The name of the port: a file name of at most 80 bytes
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL, or @a port_name no such name
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_stub_create(rpc_port_stub_h *h, const char *port_name);

/**
 * @brief Stops listening, ends the stub's connections and releases it. None of its events follows.
 * @param[in] h The stub
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL or has been destroyed
 */
int rpc_port_stub_destroy(rpc_port_stub_h h);

/**
 * @brief Begins to take connections.
 * @details The log says what went wrong, under the tag RPC_PORT, and what to do about it.
 * @param[in] h The stub
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL or has been destroyed
 * @retval #RPC_PORT_ERROR_IO_ERROR          Any other failure: the process has no app id (see
 *                                           app_get_id()), the port is listened on already, the
 *                                           ports' directory is not the user's alone, or sockets,
 *                                           memory or /proc are missing
 */
int rpc_port_stub_listen(rpc_port_stub_h h);

/**
 * @brief Adds a handler of the connected event.
 * @param[in] h         The stub
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_stub_add_connected_event_cb(rpc_port_stub_h h, rpc_port_stub_connected_event_cb cb,
                                         void *user_data);

/**
 * @brief Adds a handler of the disconnected event.
 * @param[in] h         The stub
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_stub_add_disconnected_event_cb(rpc_port_stub_h h,
                                            rpc_port_stub_disconnected_event_cb cb,
                                            void *user_data);

/**
 * @brief Adds a handler of the received event.
 * @details Of several handlers, all are called until one returns another result than 0. Messages
 *          that came before the first one was added have waited for it.
 * @param[in] h         The stub
 * @param[in] cb        The handler
 * @param[in] user_data What it is called with; may be NULL
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h or @a cb is NULL, or @a h has been destroyed
 * @retval #RPC_PORT_ERROR_OUT_OF_MEMORY     There is no memory for it
 */
int rpc_port_stub_add_received_event_cb(rpc_port_stub_h h, rpc_port_stub_received_event_cb cb,
                                        void *user_data);

/**
 * @brief Requires a privilege of those that connect.
 * @details Without effect on a desktop, where the processes of one user have the same rights.
 * @param[in] h         The stub
 * @param[in] privilege The privilege
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL, or @a h has been destroyed
 */
int rpc_port_stub_add_privilege(rpc_port_stub_h h, const char *privilege);

/**
 * @brief Says whether only applications signed alike may connect.
 * @details Without effect on a desktop, where nothing is signed.
 * @param[in] h       The stub
 * @param[in] trusted Whether it is so
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER @a h is NULL or has been destroyed
 */
int rpc_port_stub_set_trusted(rpc_port_stub_h h, const bool trusted);

/**
 * @brief Gets a port of one of the stub's connections.
 * @param[in]  h        The stub
 * @param[in]  type     Which of the two
 * @param[in]  instance The name of the connection, as the events give it
 * @param[out] port     The port, owned by its connection
 * @return 0 on success, otherwise a negative error value
 * @retval #RPC_PORT_ERROR_NONE              Success
 * @retval #RPC_PORT_ERROR_INVALID_PARAMETER An argument is NULL, @a h has been destroyed, or
 *                                           @a type is none of the two
 * @retval #RPC_PORT_ERROR_IO_ERROR          There is no such connection, or this port of it has
 * been disconnected
 */
int rpc_port_stub_get_port(rpc_port_stub_h h, rpc_port_port_type_e type, const char *instance,
                           rpc_port_h *port);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
