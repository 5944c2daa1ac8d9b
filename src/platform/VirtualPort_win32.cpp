// SPDX-License-Identifier: GPL-3.0-or-later
//
// Windows has no pseudo-terminals that look like COM ports; a null-modem driver's port pair serves
// instead. Every call here says "not supported".
#include "platform/VirtualPort.h"

#include <windows.h>

namespace qor {

CVirtualPort::~CVirtualPort() = default;

SystemError CVirtualPort::Open(std::string&) {
    return ERROR_NOT_SUPPORTED;
}

bool CVirtualPort::WaitForListener(int) {
    return false;
}

SystemError CVirtualPort::Write(ByteSpan, int, std::size_t& written) {
    written = 0;
    return ERROR_NOT_SUPPORTED;
}

bool CVirtualPort::Drained() const {
    return true;
}

void CVirtualPort::Close() {}

} // namespace qor
