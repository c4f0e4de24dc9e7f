#pragma once

#include <QtGlobal>

namespace orv::test {

/// A TCP port of 127.0.0.1 that refuses connections, and that nobody else can have meanwhile.
class RefusingPort {
  public:
    RefusingPort();
    ~RefusingPort();

    RefusingPort(const RefusingPort&) = delete;
    RefusingPort& operator=(const RefusingPort&) = delete;

    quint16 port() const { return port_; }

  private:
    int socket_ = -1;
    quint16 port_ = 0;
};

/// A port of 127.0.0.1 for TCP and UDP that is free now and given out once. The system gives it to
/// nobody of its own accord, and test programs that run at the same time get different ones.
quint16 freePort();

} // namespace orv::test
