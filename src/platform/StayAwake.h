// SPDX-License-Identifier: GPL-3.0-or-later
//
// Keeps the computer from going to sleep by itself for as long as it lives; closing its lid still
// sends it to sleep. On Windows; elsewhere that is left to the policy of the desktop session.
#pragma once

namespace qor {

#if defined(_WIN32)

class CStayAwake {
  public:
    CStayAwake();
    ~CStayAwake();
    CStayAwake(const CStayAwake&) = delete;
    CStayAwake& operator=(const CStayAwake&) = delete;

  private:
    void* Request; ///< of the system; one that could not be had keeps nothing awake
};

#else

struct CStayAwake {};

#endif

} // namespace qor
