#include "platform/linux/proc_tables.h"

#include <gtest/gtest.h>

namespace nuvrel::platform {
namespace {

// Real lines of /proc/net/tcp and tcp6: a listener on 127.0.0.1:8765 (0x223D), an established
// connection from that port, a listener on another port, and a header.
constexpr std::string_view tcp4 =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n"
    "   0: 0100007F:223D 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 "
    "48213 1 0000000000000000 100 0 0 10 0\n"
    "   1: 0100007F:223D 0100007F:9C40 01 00000000:00000000 00:00000000 00000000  1000        0 "
    "48999 1 0000000000000000 20 4 30 10 -1\n"
    "   2: 00000000:1F90 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 "
    "1234 1 0000000000000000 100 0 0 10 0\n";
constexpr std::string_view tcp6 =
    "  sl  local_address                         remote_address                        st tx_queue "
    "rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
    "   0: 00000000000000000000000001000000:223D 00000000000000000000000000000000:0000 0A "
    "00000000:00000000 00:00000000 00000000  1000        0 51111 1 0000000000000000 100 0 0 10 0\n"
    "   1: 00000000000000000000000001000000:223E 00000000000000000000000000000000:0000 0A "
    "00000000:00000000 00:00000000 00000000  1000        0 0 1 0000000000000000 100 0 0 10 0\n"
    "   2: garbage\n";

TEST(ProcTables, ListeningInodesAreThoseInListenStateOnThePort) {
    EXPECT_EQ(listeningSocketInodes(tcp4, 8765), (std::vector<std::uint64_t>{48213}));
    EXPECT_EQ(listeningSocketInodes(tcp4, 8080), (std::vector<std::uint64_t>{1234}));
    EXPECT_EQ(listeningSocketInodes(tcp6, 8765), (std::vector<std::uint64_t>{51111}));
    // Port 8766 listens with inode 0 (a socket being torn down): no inode to look for.
    EXPECT_TRUE(listeningSocketInodes(tcp6, 8766).empty());
    // The connected socket's remote port is 0x9C40 = 40000: never a listener.
    EXPECT_TRUE(listeningSocketInodes(tcp4, 40000).empty());
    EXPECT_TRUE(listeningSocketInodes("", 8765).empty());
}

TEST(ProcTables, SocketLinksAndCommNames) {
    EXPECT_EQ(socketInode("socket:[48213]"), 48213u);
    EXPECT_EQ(socketInode("pipe:[48213]"), std::nullopt);
    EXPECT_EQ(socketInode("socket:[]"), std::nullopt);
    EXPECT_EQ(socketInode("socket:[12x]"), std::nullopt);
    EXPECT_EQ(socketInode("/dev/null"), std::nullopt);

    EXPECT_EQ(processNameFromComm("llama-server\n"), "llama-server");
    EXPECT_EQ(processNameFromComm("  /usr/bin/ps \n"), "ps");
    EXPECT_EQ(processNameFromComm("\n"), std::nullopt);
    EXPECT_EQ(processNameFromComm(""), std::nullopt);
}

}  // namespace
}  // namespace nuvrel::platform
