# SPDX-License-Identifier: MIT
# `make package`: a .deb on Linux (Depends from dpkg-shlibdeps plus what Qt
# loads at run time), a disk image of the deployed bundle on macOS.

set(CPACK_PACKAGE_NAME "plendra")
set(CPACK_PACKAGE_VENDOR "The Plendra developers")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "replace a green or blue photo backdrop with a background photo")
set(CPACK_PACKAGE_HOMEPAGE_URL "${PLENDRA_WEB_ADDRESS}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_CONTACT "${PLENDRA_MAINTAINER}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
# Folders the package makes are readable by all, whatever the builder's umask.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(APPLE)
  set(CPACK_GENERATOR "DragNDrop")
else()
  set(CPACK_GENERATOR "DEB")
  set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
  set(CPACK_DEBIAN_FILE_NAME "DEB-DEFAULT")
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${PLENDRA_MAINTAINER}")
  set(CPACK_DEBIAN_PACKAGE_SECTION "graphics")
  set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # Loaded at run time, so dpkg-shlibdeps cannot see them: Qt's TIFF reader,
  # the Arial-compatible face the window is drawn with, and the desktop opener.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-image-formats-plugins, fonts-liberation, xdg-utils")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  # The synopsis is the summary above; this is the extended description.
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
      "Plendra keeps foreground photos, shot in front of a green or blue backdrop,
and background photos in two thumbnail lists. Pick one of each, click the
backdrop in the preview, and every backdrop pixel is replaced by the
background pixel at the same place. Save Image writes the composite into
Documents/Plendra and shows it.")
endif()

include(CPack)
