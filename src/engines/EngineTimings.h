#pragma once

#include <chrono>

namespace orv {

/// The fixed times of the direct engines.
struct EngineTimings {
    /// For a streaming service to accept the connection, and to send its first message where one is
    /// waited for.
    std::chrono::milliseconds streamRequest = std::chrono::seconds(60);
    /// For an open connection to give a sign of life: to take any of the bytes that wait for it, or
    /// to answer a ping, if it ever has.
    std::chrono::milliseconds streamStall = std::chrono::seconds(7);
    /// Between two pings.
    std::chrono::milliseconds ping = std::chrono::seconds(2);
    /// How long sound may wait for its turn; what is older is dropped.
    std::chrono::milliseconds oldestSpeech = std::chrono::seconds(15);
    /// For a streaming service to say its first word before its newer interface is tried.
    std::chrono::milliseconds firstWord = std::chrono::seconds(5);
    /// For a streaming service to bring its last results once it has been told that no more comes.
    std::chrono::milliseconds lastResults = std::chrono::seconds(5);
    /// Between two keep-alive messages.
    std::chrono::milliseconds keepAlive = std::chrono::seconds(5);
    /// For a farewell to a streaming service to leave.
    std::chrono::milliseconds streamFarewell = std::chrono::seconds(1);
    /// For a recognition request to go on: no byte in either direction for that long ends it.
    std::chrono::milliseconds recognition = std::chrono::seconds(15);
    /// The same for a translation request.
    std::chrono::milliseconds translation = std::chrono::seconds(10);
};

} // namespace orv
