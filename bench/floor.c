/* What the system charges for the same work, with nothing around it. */
#include "floor.h"

#include <string.h>
#include <windows.h>

static HANDLE Open(const char* path, DWORD access, DWORD creation) {
  return CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, NULL, creation,
                     FILE_ATTRIBUTE_NORMAL, NULL);
}

void FloorLogLine(const char* line) {
  char start[16];
  DWORD done;
  LARGE_INTEGER zero = {.QuadPart = 0}, end;
  GetFileAttributesW(L"LD.txt");
  HANDLE file = Open("LD.txt", GENERIC_READ, OPEN_EXISTING);
  ReadFile(file, start, sizeof start, &done, NULL);
  CloseHandle(file);
  file = Open("Log\\Caixora.log", GENERIC_READ, OPEN_EXISTING);
  SetFilePointerEx(file, zero, &end, FILE_END);
  CloseHandle(file);
  file = Open("Log\\Caixora.log", FILE_APPEND_DATA | GENERIC_READ, OPEN_ALWAYS);
  WriteFile(file, line, (DWORD)strlen(line), &done, NULL);
  CloseHandle(file);
}

void FloorSale(void) {
  Sleep(1000);
  Sleep(100);
  Sleep(200);
}
