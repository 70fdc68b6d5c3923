# What is installed, which is what the package holds: scripts/package.sh adds documents, notices and
# texts for Windows in the folder "conteudo", and makes the ZIP.
include(CMakePackageConfigHelpers)

# Numbers that stand elsewhere follow the project's.
file(READ ${PROJECT_SOURCE_DIR}/CHANGELOG.md changes)
string(REPLACE "." "\\." version ${PROJECT_VERSION})
if(NOT changes MATCHES "\n## \\[${version}\\] - ")
  message(FATAL_ERROR "CHANGELOG.md has no section for ${PROJECT_VERSION}")
endif()
file(READ ${PROJECT_SOURCE_DIR}/bindings/node/package.json node_package)
string(JSON node_version GET ${node_package} version)
if(NOT PROJECT_VERSION MATCHES "^${node_version}\\.")
  message(FATAL_ERROR "bindings/node/package.json is not of version ${PROJECT_VERSION}")
endif()

# What the linker took from where, for the list of components.
foreach(target caixora caixora_host clientorvane_simulador Trevix Email)
  if(MINGW)
    target_link_options(${target} PRIVATE -Wl,-Map=${PROJECT_BINARY_DIR}/${target}.map)
  endif()
endforeach()

install(TARGETS caixora RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS caixora_host DESTINATION bin)
install(TARGETS clientorvane_simulador Trevix Email DESTINATION simuladores)
install(FILES include/caixora.h DESTINATION include)
install(DIRECTORY bindings DESTINATION .)
install(DIRECTORY examples/ DESTINATION exemplos PATTERN CMakeLists.txt EXCLUDE)
install(FILES CHANGELOG.md DESTINATION docs)
write_basic_package_version_file(CaixoraConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES package/CaixoraConfig.cmake ${PROJECT_BINARY_DIR}/CaixoraConfigVersion.cmake
  DESTINATION lib/cmake/Caixora)
install(DIRECTORY ${PROJECT_BINARY_DIR}/conteudo/ DESTINATION . OPTIONAL)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME caixora)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME caixora-${PROJECT_VERSION}-win64)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
