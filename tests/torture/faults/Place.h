#pragma once

#include "Subject.h"

#include <array>
#include <cstdint>

namespace faults {

/// Where a call comes from: the same in every run of the same program, wherever it and its
/// libraries are loaded.
struct Place {
    static constexpr std::size_t mostFrames = 6;

    const char* call = nullptr;
    Subject subject;
    /// The file name of what made the call, "program" for the program itself. The standard library
    /// only hands on what others want.
    std::array<char, 48> library = {};
    /// Return addresses within the program, as offsets from where it is loaded, the innermost
    /// first.
    std::array<std::uintptr_t, mostFrames> frames = {};
    std::size_t depth = 0;

    /// A number for all of that.
    std::uint64_t hash() const;

    /// True for the libraries that talk to the display, the message bus and the session's manager.
    /// What is lost there, a toolkit answers by ending its program.
    bool isOfTheDesktop() const;
};

/// The place of the call that this thread is just making.
Place currentPlace(const Request& request);

/// Finds out where the program is loaded. Before the first place.
void learnTheProgram();

} // namespace faults
