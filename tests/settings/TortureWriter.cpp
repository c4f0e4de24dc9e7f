// The victim of the torture test: changes settings until it is killed, and says on standard output
// which step has been reported as written.
//   orvane_torture_writer <file> flood|wait

#include "DefaultsStore.h"
#include "SerialQueue.h"
#include "TortureSteps.h"

#include <QString>

#include <cstdio>
#include <string>
#include <unistd.h>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: orvane_torture_writer <file> flood|wait\n", stderr);
        return 2;
    }
    const bool waits = std::string(argv[2]) == "wait";
    orv::SerialQueue disk(u"test.disk"_s);
    orv::DefaultsStore store(disk, QString::fromLocal8Bit(argv[1]));
    const std::int64_t first = store.integer(u"last"_s).value_or(0) + 1;
    // Every step is two changes: what is on the disk after an odd number of them is a step begun.
    store.setWrittenObserver([first](std::uint64_t generation) {
        const std::int64_t step = first - 1 + static_cast<std::int64_t>(generation / 2);
        const std::string line = std::to_string(step) + '\n';
        if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) {
            ::_exit(3); // Nobody listens any more.
        }
    });
    // A flood without end would leave the store's writer hardly a turn at the store's lock.
    constexpr std::int64_t stepsOfAFlood = 200;
    for (std::int64_t step = first;; ++step) {
        store.setString(orv::test::tortureKey(step), orv::test::tortureText(step));
        store.setInteger(u"last"_s, step);
        if (waits || step % stepsOfAFlood == 0) {
            store.waitUntilWritten();
        }
    }
}
