// SPDX-License-Identifier: Apache-2.0
#include "glib/GLib.h"

#include <dlfcn.h>

namespace platform::glib {

namespace {

constexpr const char *kLibrary = "libglib-2.0.so.0";
constexpr const char *kPolledKey = "platform-polled-by-ecore";

const GLib *found = nullptr;

template <typename Function>
bool load(void *library, const char *name, Function &function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

bool loadAll(void *library, GLib &glib) {
  return load(library, "g_main_context_default", glib.contextDefault)
         && load(library, "g_main_context_acquire", glib.contextAcquire)
         && load(library, "g_main_context_release", glib.contextRelease)
         && load(library, "g_main_context_prepare", glib.contextPrepare)
         && load(library, "g_main_context_query", glib.contextQuery)
         && load(library, "g_main_context_check", glib.contextCheck)
         && load(library, "g_main_context_dispatch", glib.contextDispatch)
         && load(library, "g_source_new", glib.sourceNew)
         && load(library, "g_source_add_poll", glib.sourceAddPoll)
         && load(library, "g_source_set_can_recurse", glib.sourceSetCanRecurse)
         && load(library, "g_source_attach", glib.sourceAttach)
         && load(library, "g_source_destroy", glib.sourceDestroy)
         && load(library, "g_source_unref", glib.sourceUnref)
         && load(library, "g_quark_from_static_string", glib.quarkFromStaticString)
         && load(library, "g_dataset_id_set_data_full", glib.datasetSet)
         && load(library, "g_dataset_id_get_data", glib.datasetGet);
}

void *polledData(const GLib &glib) {
  return glib.datasetGet(glib.contextDefault(), glib.quarkFromStaticString(kPolledKey));
}

} // namespace

const GLib *findLoaded() {
  static GLib glib = {};
  if (found != nullptr) {
    return found;
  }
  void *library = dlopen(kLibrary, RTLD_LAZY | RTLD_NOLOAD);
  if (library != nullptr && loadAll(library, glib)) {
    found = &glib;
  } else if (library != nullptr) {
    dlclose(library);
  }
  return found;
}

const GLib *loaded() {
  return found;
}

bool isPolledByEcore(const GLib &glib) {
  const void *polled = polledData(glib);
  return polled != nullptr && *static_cast<const bool *>(polled);
}

bool &polledByEcore(const GLib &glib) {
  void *polled = polledData(glib);
  if (polled == nullptr) {
    polled = new bool(false);
    glib.datasetSet(glib.contextDefault(), glib.quarkFromStaticString(kPolledKey), polled, nullptr);
  }
  return *static_cast<bool *>(polled);
}

} // namespace platform::glib
