#include "Place.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <string_view>
#include <unwind.h>

namespace faults {

namespace {

using namespace std::string_view_literals;

/// The program's own code. Set once, before there is a second thread.
struct Program {
    std::uintptr_t base = 0;
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    bool holds(std::uintptr_t address) const { return address >= begin && address < end; }
};

Program program;
const void* ownMap = nullptr; ///< Which loaded file this library is.

constexpr int mostStackFrames = 160;

constexpr std::array passingLibraries = {"libstdc++.so"sv, "libc.so"sv, "libgcc_s.so"sv};

constexpr std::array desktopLibraries = {"libxcb"sv, "libX11"sv,    "libICE"sv,
                                         "libSM"sv,  "libdbus-1"sv, "libwayland-client"sv};

template <typename List>
bool startsWithAny(std::string_view name, const List& starts) {
    return std::ranges::any_of(starts,
                               [&](std::string_view start) { return name.starts_with(start); });
}

int learnFirst(dl_phdr_info* info, std::size_t /*size*/, void* /*unused*/) {
    program.base = info->dlpi_addr;
    for (int index = 0; index < info->dlpi_phnum; ++index) {
        const ElfW(Phdr)& part = info->dlpi_phdr[index];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0) {
            program.begin = program.base + part.p_vaddr;
            program.end = program.begin + part.p_memsz;
        }
    }
    return 1; // The first one is the program; the others are its libraries.
}

const link_map* mapOf(std::uintptr_t address) {
    dl_find_object found = {};
    return ::_dl_find_object(reinterpret_cast<void*>(address), &found) == 0 ? found.dlfo_link_map
                                                                            : nullptr;
}

std::string_view fileName(const link_map& map) {
    const std::string_view path(map.l_name);
    return path.substr(path.rfind('/') + 1);
}

void setLibrary(Place& place, std::string_view name) {
    const std::size_t length = std::min(name.size(), place.library.size() - 1);
    name.copy(place.library.data(), length);
    place.library[length] = '\0';
}

/// Up the stack of the call.
struct Walk {
    Place& place;
    int steps = 0;
};

/// Takes one return address, from the innermost on.
_Unwind_Reason_Code take(_Unwind_Context* context, void* taken) {
    Walk& walk = *static_cast<Walk*>(taken);
    Place& place = walk.place;
    const std::uintptr_t address = _Unwind_GetIP(context);
    if (program.holds(address)) {
        if (place.library[0] == '\0') {
            setLibrary(place, "program");
        }
        place.frames[place.depth++] = address - program.base;
    } else if (place.library[0] == '\0') {
        const link_map* map = mapOf(address);
        if (map != nullptr && map != ownMap && !startsWithAny(fileName(*map), passingLibraries)) {
            setLibrary(place, fileName(*map));
        }
    }
    const bool isEnough = place.depth == Place::mostFrames || ++walk.steps == mostStackFrames;
    return isEnough ? _URC_END_OF_STACK : _URC_NO_REASON;
}

class Fingerprint {
  public:
    void add(const void* bytes, std::size_t size) {
        const auto* byte = static_cast<const unsigned char*>(bytes);
        for (std::size_t index = 0; index < size; ++index) {
            value_ = (value_ ^ byte[index]) * 1099511628211ULL;
        }
    }

    void add(const char* text) { add(text, std::strlen(text) + 1); }

    /// Never 0, which stands for no place.
    std::uint64_t value() const { return value_ | 1U; }

  private:
    std::uint64_t value_ = 14695981039346656037ULL;
};

} // namespace

std::uint64_t Place::hash() const {
    Fingerprint print;
    print.add(call);
    print.add(subject.words());
    print.add(library.data());
    print.add(frames.data(), depth * sizeof(frames[0]));
    return print.value();
}

bool Place::isOfTheDesktop() const {
    return startsWithAny(std::string_view(library.data()), desktopLibraries);
}

Place currentPlace(const Request& request) {
    Place place{.call = request.call, .subject = Subject(request)};
    if (!place.subject.canFail()) {
        return place;
    }

    Walk walk{place};

    _Unwind_Backtrace(take, &walk);
    if (place.library[0] == '\0') {
        setLibrary(place, "unknown");
    }
    return place;
}

void learnTheProgram() {
    ::dl_iterate_phdr(learnFirst, nullptr);
    ownMap = mapOf(reinterpret_cast<std::uintptr_t>(&learnTheProgram));
}

} // namespace faults
