// What must hold for any input, however hostile. Each function feeds arbitrary bytes to the library
// and throws std::logic_error when something does not hold. Tests and fuzz targets share them.
#pragma once

#include <string_view>

void CheckAnswer(std::string_view bytes);   // an answer file
bool CheckRequest(std::string_view bytes);  // operation, numbers and texts of a call; true when it
                                            // was accepted
void CheckTexts(std::string_view bytes);    // configuration file, log message, switch file
