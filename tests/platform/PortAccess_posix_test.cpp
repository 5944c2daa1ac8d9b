// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports as the system tells of them: a pseudo-terminal that another process opens, and one that
// another user may not open.
#if !defined(_WIN32)
#include "platform/PortAccess.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qor {
namespace {

constexpr uid_t Nobody = 65534;

class PortAccessTest : public testing::Test {
  protected:
    PortAccessTest() {
        Far = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::grantpt(Far);
        ::unlockpt(Far);
        Name = ::ptsname(Far);
    }
    ~PortAccessTest() override { ::close(Far); }

    static PortAccess LookAt(const std::string& name) { return LookAtPorts({&name, 1}).front(); }

    int Far = -1;
    std::string Name;
};

TEST_F(PortAccessTest, TellsWhoHoldsAPortWithoutOpeningIt) {
    EXPECT_EQ(LookAt(Name), PortAccess());
    const int own = ::open(Name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(LookAt(Name).state, PortState::Free) << "what this program holds is its session's";
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ready[1]);
        char byte;
        ::_exit(static_cast<int>(::read(ready[0], &byte, 1))); // holds what it has inherited
    }
    const PortAccess held = LookAt(Name);
    EXPECT_EQ(held.state, PortState::InUse);
    EXPECT_EQ(held.pid, child);
    EXPECT_EQ(held.holder.substr(0, 8), "test_pla");
    ::close(own);
    ::close(ready[0]);
    ::close(ready[1]);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(LookAt(Name).state, PortState::Free);
}

TEST_F(PortAccessTest, TellsWhatIsNoPortOrMayNotBeOpened) {
    const std::vector<std::string> names{"/dev/none", "/etc/passwd", "",
                                         std::string("/dev/\0x", 7)};
    const std::vector<PortAccess> all = LookAtPorts(names);
    EXPECT_EQ(all[0].state, PortState::Missing);
    EXPECT_EQ(all[1].state, PortState::NoPort);
    EXPECT_EQ(all[2].state, PortState::Missing);
    EXPECT_EQ(all[3].state, PortState::Missing);
    ASSERT_EQ(::chmod(Name.c_str(), 0060), 0);
    const pid_t child = ::fork();
    if (child == 0) { // the superuser may open everything
        if (::getuid() == 0 && (::setgid(Nobody) != 0 || ::setuid(Nobody) != 0))
            ::_exit(2);
        ::_exit(LookAt(Name).state == PortState::NotAllowed ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(StablePortName, IsTheNameItselfWhereThereIsNoLink) {
    for (const char* name : {"/dev/none", "/dev/null", ""})
        EXPECT_EQ(StablePortName(name), name);
}

} // namespace
} // namespace qor
#endif
