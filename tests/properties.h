// What must hold for any input, however hostile. Each function takes arbitrary bytes, feeds them to
// the library and compares with a second, naive reading of the same rules; it throws
// std::logic_error when they differ. The mutation test and the fuzz targets share them.
#pragma once

#include <string_view>

void CheckAnswer(std::string_view bytes);   // an answer file
bool CheckRequest(std::string_view bytes);  // operation, amount, counts and texts of a call; true
                                            // when it was accepted
void CheckTexts(std::string_view bytes);    // configuration file, log message, switch file
