# The target `package`: pelnor-VERSION-win64.zip in the build folder, the stripped program with what its user is to read,
# and its SHA-256 beside it. It builds the program and nothing else, which CPack's own target of that name would not do.

# Texts as Notepad has always read them: CR LF, and a mark that says UTF-8.
string(ASCII 239 187 191 mark)
foreach(text platform/desktop/readme.txt LICENSE)
  file(READ ${text} contents)
  get_filename_component(name ${text} NAME_WE)
  file(CONFIGURE OUTPUT package/${name}.txt CONTENT "${mark}${contents}" @ONLY NEWLINE_STYLE CRLF)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${text})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/package/${name}.txt DESTINATION .)
endforeach()
install(TARGETS pelnor RUNTIME DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_CHECKSUM SHA256)
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
