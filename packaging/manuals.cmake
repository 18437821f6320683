# SPDX-License-Identifier: MIT
# Man pages (compressed, as Debian installs them), the licence and the
# package's changelog.

set(man_pages plendra)
if(PLENDRA_BATCH_TARGET)
  list(APPEND man_pages plendra-batch)
endif()
set(man_outputs "")
foreach(page ${man_pages})
  set(roff "${CMAKE_CURRENT_BINARY_DIR}/man/${page}.1")
  if(page STREQUAL "plendra-batch")
    # Its OPTIONS section is written from the tool's own option table, the
    # one its --help is written from.
    configure_file("man/${page}.1.in" "${roff}.in" @ONLY)
    add_custom_command(OUTPUT "${roff}"
      COMMAND plendra_batch_manual "${roff}.in" "${roff}"
      DEPENDS plendra_batch_manual "${roff}.in"
      COMMENT "Writing ${page}(1) with its options")
  else()
    configure_file("man/${page}.1.in" "${roff}" @ONLY)
  endif()
  # -n keeps the name and time out of the archive, so builds are reproducible.
  add_custom_command(OUTPUT "${roff}.gz"
    COMMAND gzip -9 -n -f -k "${roff}"
    DEPENDS "${roff}" "${CMAKE_CURRENT_SOURCE_DIR}/man/${page}.1.in"
    COMMENT "Compressing ${page}(1)")
  list(APPEND man_outputs "${roff}.gz")
endforeach()
add_custom_target(plendra_manuals ALL DEPENDS ${man_outputs})
install(FILES ${man_outputs} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

# Debian looks for the licence (LICENSE at the top of the sources) as the
# package's copyright file.
configure_file(debian/copyright.in "${CMAKE_CURRENT_BINARY_DIR}/copyright" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
set(changelog "${CMAKE_CURRENT_BINARY_DIR}/changelog")
configure_file(debian/changelog.in "${changelog}" @ONLY)
add_custom_command(OUTPUT "${changelog}.gz"
  COMMAND gzip -9 -n -f -k "${changelog}"
  DEPENDS "${changelog}" "${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog.in"
  COMMENT "Compressing the changelog")
add_custom_target(plendra_changelog ALL DEPENDS "${changelog}.gz")
install(FILES "${changelog}.gz" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
