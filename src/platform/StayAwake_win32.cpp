// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/StayAwake.h"

#include <windows.h>

namespace qor {

CStayAwake::CStayAwake() {
    wchar_t reason[] = L"Telemetry is being logged."; // shown by powercfg /requests
    REASON_CONTEXT context{};
    context.Version = POWER_REQUEST_CONTEXT_VERSION;
    context.Flags = POWER_REQUEST_CONTEXT_SIMPLE_STRING;
    context.Reason.SimpleReasonString = reason;
    Request = PowerCreateRequest(&context);
    if (Request != INVALID_HANDLE_VALUE)
        PowerSetRequest(Request, PowerRequestSystemRequired);
}

CStayAwake::~CStayAwake() {
    if (Request != INVALID_HANDLE_VALUE)
        CloseHandle(Request);
}

} // namespace qor
