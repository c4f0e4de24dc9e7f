#pragma once

#include "Place.h"

namespace faults {

/// Opens the file into which everything is told. It gets a number that programs do not use.
void openReport(const char* path);

/// "place HASH COUNT CALL|SUBJECT|LIBRARY|OFFSET OFFSET …"
void tellPlace(const Place& place, std::uint64_t count);

/// "fault HASH OCCURRENCE ERROR CALL|SUBJECT|LIBRARY|OFFSET …|FILE", before the call fails. FILE is
/// the path that the call names, or what its descriptor stands for.
void tellFault(const Place& place, const Request& request, unsigned long occurrence, int error);

} // namespace faults
