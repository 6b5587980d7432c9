# The target `package`: pelnor-VERSION-win64.zip in the build folder, the stripped program with its documents. It builds
# the program and nothing else, which CPack's own target of that name would not do.
install(TARGETS pelnor RUNTIME DESTINATION .)
install(FILES README.md README.ja.md LICENSE DESTINATION .)
install(FILES HACKING.md CHANGELOG.md DESTINATION . OPTIONAL)
install(DIRECTORY docs DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME pelnor-${PROJECT_VERSION}-win64)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_OUTPUT_CONFIG_FILE ${CMAKE_BINARY_DIR}/package/CPackConfig.cmake)
include(CPack)

add_custom_target(package
  COMMAND ${CMAKE_CPACK_COMMAND} --config ${CPACK_OUTPUT_CONFIG_FILE} -B ${CMAKE_BINARY_DIR}
  COMMENT "Packing ${CPACK_PACKAGE_FILE_NAME}.zip"
  VERBATIM)
add_dependencies(package pelnor)
