// Turns a row of the operations table and the call's arguments into the request record and into the
// log line that names the operation.
#pragma once

#include <string>

#include "exchange/operations.h"

namespace caixora {

// The record's field lines, each ended by a line feed except the terminator. Refuses items that are
// not as they should be.
Refusal BuildRecord(const Operation& operation, const TefArguments& arguments, std::string& record);

// Writes the line "[METODO] ..." with the arguments, if the operation has one.
void LogOperation(const Operation& operation, const TefArguments& arguments);

}  // namespace caixora
