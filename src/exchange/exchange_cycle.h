// Moves one request through the exchange folder: clean, check that the GP lives, write, wait for
// the GP to take it, wait for the answer. Every wait is a sleep of fixed length, once or in a loop.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Removes what an earlier call left and lets the folder settle.
Refusal CleanFolders(Exchange&);

// Makes sure that the GP runs. One that does not is started, and the call ends: the host tries
// again once it is up.
Refusal CheckGp(Exchange& exchange);

// Writes the record as the request file. Half a request, on a full disk, is taken back.
Refusal WriteRequest(Exchange& exchange);

// Hands the written request over. While a confirmation or undo is pending the library writes the
// answer itself, without waiting for the GP; otherwise it waits for the GP to take the request, and
// stops and restarts a GP that does not.
Refusal HandOver(Exchange& exchange);

// Waits for the answer file as long as the GP lives, or for ever where it is not watched, and opens
// it.
Refusal AwaitAnswer(Exchange& exchange);

}  // namespace caixora
