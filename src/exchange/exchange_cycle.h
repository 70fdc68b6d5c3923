// Moves one request through the exchange folder: clean, check that the GP lives, write, wait for
// the GP to take it, wait for the answer. Every wait is a fixed sleep in a poll loop.
#pragma once

#include <optional>
#include <string_view>

#include "exchange/validation.h"
#include "support/file.h"

namespace caixora {

// Removes what an earlier call left and makes sure that the GP runs. One that does not is started,
// and the call ends: the host tries again once it is up.
Refusal CleanAndCheckGp(bool check_liveness);

// Makes the request in progress a liveness request: its answer comes in a file of its own, and an
// old one is removed.
void ExpectLivenessAnswer();

// Writes the record as the request file. Never leaves half a request behind.
Refusal WriteRequest(std::string_view record);

// Hands the written request over. While a confirmation or undo is pending the library writes the
// answer itself, without waiting for the GP; otherwise it waits for the GP to take the request, and
// stops and restarts a GP that does not.
Refusal HandOver(std::int32_t coupon);

// Waits for the answer file as long as the GP lives, without a time limit. On success `answer` is
// open.
Refusal AwaitAnswer(bool check_liveness, std::optional<File>& answer);

// Full path of the file that holds the answer to the request in progress.
std::string AnswerPath();

}  // namespace caixora
