# SPDX-License-Identifier: MIT
# What the desktop's menu, docks and software centres read: the desktop entry,
# the icon in the hicolor theme and the AppStream metainfo.

install(FILES "${PLENDRA_APP_ID}.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")

# The icon theme's sizes, scaled at build time from the window's own icon.
set(PLENDRA_ICON_SIZES 16 32 48 64 128 256 512)
set(icon_dir "${CMAKE_CURRENT_BINARY_DIR}/hicolor")
set(icon_outputs "")
foreach(size ${PLENDRA_ICON_SIZES})
  list(APPEND icon_outputs "${icon_dir}/${size}x${size}/apps/${PLENDRA_APP_ID}.png")
endforeach()
set(icon_source "${PROJECT_SOURCE_DIR}/resources/icon.png")
add_custom_command(OUTPUT ${icon_outputs}
  COMMAND plendra_iconsizes hicolor "${icon_source}" "${icon_dir}" "${PLENDRA_APP_ID}" ${PLENDRA_ICON_SIZES}
  DEPENDS plendra_iconsizes "${icon_source}"
  COMMENT "Scaling the icon to the icon theme's sizes")
add_custom_target(plendra_icons ALL DEPENDS ${icon_outputs})
install(DIRECTORY "${icon_dir}/" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor")

configure_file("${PLENDRA_APP_ID}.metainfo.xml.in" "${CMAKE_CURRENT_BINARY_DIR}/${PLENDRA_APP_ID}.metainfo.xml" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${PLENDRA_APP_ID}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
