// SPDX-License-Identifier: Apache-2.0
#include "norix.h"

const char *ACTION_ID = "actionId";
const char *ACTION_TYPE = "actionType";
const char *ACTION_PARAMS = "actionParams";
const char *REQUEST_ID = "requestId";
const char *ACTION_GET_APP_STATE = "getAppContext";

const char *KEY_ACTION_RESULT = "result";
const char *KEY_APP_STATE = "appContext";
const char *KEY_STATUS_CODE = "status_code";
const char *KEY_STATUS_MESSAGE = "status_msg";
const char *ACTION_EXECUTION_SUCCESS = "ACTION_EXECUTION_SUCCESS";
const char *ACTION_EXECUTION_FAILURE = "ACTION_EXECUTION_FAILURE";

const char *NORIX_PROXY_APP_NAME = "com.valtren.tizen.norix";
const char *NORIX_PROXY_ALLOW_APPID_LIST_PATH = "/usr/share/norix/";
const char *NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = "allow_list.dat";

const double COMPLETE_CHECKING_TIME = 0.1;
const double COMPLETE_WAITING_MAX_COUNT = 300.0;
const int ZERO_LENGTH = 0;
