# SPDX-License-Identifier: MIT
# The macOS application bundle: Info.plist values, the .icns made from the
# window's icon, and macdeployqt on the installed bundle so that the disk
# image of `make package` carries Qt with it. Read only on Apple.

# The program keeps the build tree's bundle shape; CMake writes the bundle's
# Info.plist and places the icon when it is a real bundle.
set(icns "${CMAKE_CURRENT_BINARY_DIR}/Plendra.icns")
set(iconset "${CMAKE_CURRENT_BINARY_DIR}/Plendra.iconset")
set(icon_source "${PROJECT_SOURCE_DIR}/resources/icon.png")
add_custom_command(OUTPUT "${icns}"
  COMMAND ${CMAKE_COMMAND} -E rm -rf "${iconset}"
  COMMAND plendra_iconsizes iconset "${icon_source}" "${iconset}"
  COMMAND iconutil -c icns -o "${icns}" "${iconset}"
  DEPENDS plendra_iconsizes "${icon_source}"
  COMMENT "Making Plendra.icns from the window icon")
# The rule lives in this folder, so a target here makes it run before the
# program's bundle is put together.
add_custom_target(plendra_icns DEPENDS "${icns}")
add_dependencies(Plendra plendra_icns)
target_sources(Plendra PRIVATE "${icns}")
set_source_files_properties("${icns}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(Plendra PROPERTIES
  MACOSX_BUNDLE TRUE
  RUNTIME_OUTPUT_DIRECTORY "${PLENDRA_BESIDE_BUNDLE_DIR}"
  MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_SOURCE_DIR}/macos/Info.plist.in"
  MACOSX_BUNDLE_GUI_IDENTIFIER "${PLENDRA_APP_ID}"
  MACOSX_BUNDLE_BUNDLE_NAME "Plendra"
  MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}"
  MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
  MACOSX_BUNDLE_ICON_FILE "Plendra.icns")
foreach(config DEBUG RELEASE RELWITHDEBINFO MINSIZEREL)
  set_target_properties(Plendra PROPERTIES RUNTIME_OUTPUT_DIRECTORY_${config} "${PLENDRA_BESIDE_BUNDLE_DIR}")
endforeach()

# Installed as on the build tree: the bundle with the samples and "Bkg"
# beside it, where the program looks for them.
install(TARGETS Plendra BUNDLE DESTINATION .)
install(FILES ${PLENDRA_BESIDE_FILES} DESTINATION .)
install(FILES ${PLENDRA_BACKGROUNDS} DESTINATION Bkg)
if(PLENDRA_BATCH_TARGET)
  install(TARGETS ${PLENDRA_BATCH_TARGET} RUNTIME DESTINATION "Plendra.app/Contents/MacOS")
endif()

find_program(PLENDRA_MACDEPLOYQT macdeployqt HINTS "${QT6_INSTALL_PREFIX}/bin" "${Qt6_DIR}/../../../bin")
if(PLENDRA_MACDEPLOYQT)
  install(CODE "execute_process(COMMAND \"${PLENDRA_MACDEPLOYQT}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/Plendra.app\" COMMAND_ERROR_IS_FATAL ANY)")
else()
  message(WARNING "macdeployqt not found: the installed bundle will use the Qt on this machine")
endif()
