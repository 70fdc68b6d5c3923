# find_package(Caixora 1.0) gives Caixora::Caixora: a biblioteca, o cabeçalho e a biblioteca de
# importação que o compilador em uso entende.
if(NOT WIN32 OR NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(Caixora_FOUND FALSE)
  set(Caixora_NOT_FOUND_MESSAGE "Caixora.dll é para programas de 64 bits do Windows.")
  return()
endif()

if(NOT TARGET Caixora::Caixora)
  get_filename_component(_caixora_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
  if(MINGW)
    set(_caixora_implib "${_caixora_prefix}/lib/libCaixora.dll.a")
  else()
    set(_caixora_implib "${_caixora_prefix}/lib/Caixora.lib")
  endif()
  add_library(Caixora::Caixora SHARED IMPORTED)
  set_target_properties(Caixora::Caixora PROPERTIES
    IMPORTED_LOCATION "${_caixora_prefix}/bin/Caixora.dll"
    IMPORTED_IMPLIB "${_caixora_implib}"
    INTERFACE_INCLUDE_DIRECTORIES "${_caixora_prefix}/include"
    INTERFACE_LINK_LIBRARIES oleaut32)  # SysStringByteLen e SysFreeString, para os resultados
  unset(_caixora_implib)
  unset(_caixora_prefix)
endif()
