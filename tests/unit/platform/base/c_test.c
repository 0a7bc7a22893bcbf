/* SPDX-License-Identifier: Apache-2.0 */
#include <tizen_error.h>

#include <string.h>

int main(void) {
  set_last_result(TIZEN_ERROR_IO_ERROR);

  return get_last_result() != TIZEN_ERROR_IO_ERROR
         || strcmp(get_error_message(TIZEN_ERROR_NONE), "Successful") != 0;
}
