// The file that holds the answer to the request in progress, and the end of the exchange: reading
// it.
#pragma once

#include "exchange/tef_call.h"

namespace caixora {

// Full path of the answer file: the GP has one for liveness requests and one for all others.
std::string AnswerPath();

// Makes the request in progress a liveness request, and removes an old answer to one.
void ExpectLivenessAnswer();

// Reads the answer, makes the result of it, removes the file and forgets a pending confirmation.
Refusal ReadAnswer(Exchange& exchange);

}  // namespace caixora
