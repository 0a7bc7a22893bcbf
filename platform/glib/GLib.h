// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_GLIB_GLIB_H
#define PLATFORM_GLIB_GLIB_H

#include <glib.h>

namespace platform::glib {

/**
 * @brief The functions of the GLib that the process has loaded.
 * @details They are looked up at run time: an application that does not use GLib must not have to
 *          load it.
 */
struct GLib {
  decltype(&g_main_context_default) contextDefault;
  decltype(&g_main_context_acquire) contextAcquire;
  decltype(&g_main_context_release) contextRelease;
  decltype(&g_main_context_prepare) contextPrepare;
  decltype(&g_main_context_query) contextQuery;
  decltype(&g_main_context_check) contextCheck;
  decltype(&g_main_context_dispatch) contextDispatch;
  decltype(&g_source_new) sourceNew;
  decltype(&g_source_add_poll) sourceAddPoll;
  decltype(&g_source_set_can_recurse) sourceSetCanRecurse;
  decltype(&g_source_attach) sourceAttach;
  decltype(&g_source_destroy) sourceDestroy;
  decltype(&g_source_unref) sourceUnref;
  decltype(&g_quark_from_static_string) quarkFromStaticString;
  decltype(&g_dataset_id_set_data_full) datasetSet;
  decltype(&g_dataset_id_get_data) datasetGet;
};

/**
 * @brief Looks whether the process has loaded GLib. @return Its functions, or null.
 * @details Once found, it stays: GLib cannot be unloaded.
 */
const GLib *findLoaded();

/// What findLoaded() found, without looking again.
const GLib *loaded();

/**
 * @brief Whether the default context's current prepare or check is part of an Ecore iteration.
 * @details Ecore then serves what is registered with both loops, and the GLib source has to keep
 *          quiet. The answer is kept with the context, because the libraries that ask and tell do
 *          not otherwise know each other.
 */
bool isPolledByEcore(const GLib &glib);

/// The variable behind isPolledByEcore(), for the code that lets Ecore poll the context. Never
/// destroyed.
bool &polledByEcore(const GLib &glib);

} // namespace platform::glib

#endif
