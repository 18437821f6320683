# SPDX-License-Identifier: MIT
# Where an installed Plendra lies, under any prefix:
#   bin/plendra                     launcher (and bin/plendra-batch, when built)
#   lib/plendra/Plendra.app/...     the program, in the bundle's shape
#   lib/plendra/{1green.JPG,blue1.JPG,icon.png,Bkg}
#                                   links to the data, beside the bundle where
#                                   the program looks for them
#   share/plendra/...               the read-only data itself
# Every link is relative, so the tree works wherever it is unpacked.

# The batch tool is the executable target of batch/ when that folder is part
# of the tree.
set(PLENDRA_BATCH_TARGET "")
foreach(candidate plendra-batch)
  if(TARGET ${candidate} AND NOT PLENDRA_BATCH_TARGET)
    set(PLENDRA_BATCH_TARGET ${candidate})
  endif()
endforeach()

if(APPLE)
  return() # macos.cmake installs the bundle itself
endif()

set(PLENDRA_INSTALL_APPDIR "${CMAKE_INSTALL_LIBDIR}/plendra")
set(PLENDRA_INSTALL_DATADIR "${CMAKE_INSTALL_DATADIR}/plendra")
set(PLENDRA_INSTALL_EXEDIR "${PLENDRA_INSTALL_APPDIR}/Plendra.app/Contents/MacOS")
foreach(dir PLENDRA_INSTALL_APPDIR PLENDRA_INSTALL_DATADIR CMAKE_INSTALL_BINDIR)
  if(IS_ABSOLUTE "${${dir}}")
    message(FATAL_ERROR "${dir} must be relative to the prefix, so that the installed tree can move")
  endif()
endforeach()

install(TARGETS Plendra RUNTIME DESTINATION "${PLENDRA_INSTALL_EXEDIR}")
install(FILES ${PLENDRA_BESIDE_FILES} DESTINATION "${PLENDRA_INSTALL_DATADIR}")
install(FILES ${PLENDRA_BACKGROUNDS} DESTINATION "${PLENDRA_INSTALL_DATADIR}/Bkg")

# Relative links from the folder beside the bundle to the data.
file(RELATIVE_PATH app_to_data "/prefix/${PLENDRA_INSTALL_APPDIR}" "/prefix/${PLENDRA_INSTALL_DATADIR}")
set(links "${CMAKE_CURRENT_BINARY_DIR}/beside-bundle")
file(REMOVE_RECURSE "${links}")
file(MAKE_DIRECTORY "${links}")
set(link_files "")
foreach(path ${PLENDRA_BESIDE_FILES} Bkg)
  get_filename_component(name "${path}" NAME)
  file(CREATE_LINK "${app_to_data}/${name}" "${links}/${name}" SYMBOLIC)
  list(APPEND link_files "${links}/${name}")
endforeach()
install(FILES ${link_files} DESTINATION "${PLENDRA_INSTALL_APPDIR}")

# The launcher finds the bundle from its own place, so no prefix is written
# into it.
file(RELATIVE_PATH PLENDRA_BIN_TO_APPDIR "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${PLENDRA_INSTALL_APPDIR}")
configure_file(plendra.sh.in "${CMAKE_CURRENT_BINARY_DIR}/plendra" @ONLY)
install(PROGRAMS "${CMAKE_CURRENT_BINARY_DIR}/plendra" DESTINATION "${CMAKE_INSTALL_BINDIR}")

# The batch tool works on the paths it is given, so it runs where the user
# is: a plain link to it, no change of folder.
if(PLENDRA_BATCH_TARGET)
  install(TARGETS ${PLENDRA_BATCH_TARGET} RUNTIME DESTINATION "${PLENDRA_INSTALL_EXEDIR}")
  get_target_property(batch_name ${PLENDRA_BATCH_TARGET} OUTPUT_NAME)
  if(NOT batch_name)
    set(batch_name ${PLENDRA_BATCH_TARGET})
  endif()
  file(RELATIVE_PATH bin_to_exedir "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${PLENDRA_INSTALL_EXEDIR}")
  file(CREATE_LINK "${bin_to_exedir}/${batch_name}" "${links}/plendra-batch" SYMBOLIC)
  install(FILES "${links}/plendra-batch" DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
