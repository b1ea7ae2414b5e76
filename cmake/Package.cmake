# SPDX-License-Identifier: MIT
# The Debian package. script/package builds it and everything that is handed out beside it.
find_program(GZIP gzip REQUIRED)

hollin_install_manual(hollin-cli)
hollin_install_manual(ts30-simulator)
if(HOLLIN_WINDOW)
  hollin_install_manual(hollin)
  hollin_install_icon_sizes("${PROJECT_SOURCE_DIR}/packaging/icons/com.tovari.Hollin.svg" com.tovari.Hollin)
endif()

# Packages to try the programs with, and no more than that.
set(samples a1 a2-word a2-buffer c1 a2-buffer-c1)
list(TRANSFORM samples REPLACE "(.+)" "${PROJECT_BINARY_DIR}/samples/\\1.dat" OUTPUT_VARIABLE sampleFiles)
add_custom_command(OUTPUT ${sampleFiles}
  COMMAND "${PROJECT_SOURCE_DIR}/examples/make-samples" "${HOLLIN_BIN_DIR}" "${PROJECT_BINARY_DIR}/samples" ${samples}
  DEPENDS hollin-cli ts30-sample-image examples/make-samples VERBATIM)
add_custom_target(samples ALL DEPENDS ${sampleFiles})
install(FILES ${sampleFiles} DESTINATION "${CMAKE_INSTALL_DATADIR}/hollin/samples")

install(FILES packaging/debian/copyright DESTINATION "${CMAKE_INSTALL_DOCDIR}")
set(changelog "${PROJECT_BINARY_DIR}/changelog")
add_custom_command(OUTPUT "${changelog}.gz"
  COMMAND "${PROJECT_SOURCE_DIR}/packaging/debian/make-changelog" "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${changelog}"
  COMMAND ${GZIP} -9nf "${changelog}"
  DEPENDS CHANGELOG.md packaging/debian/make-changelog VERBATIM)
add_custom_target(changelog ALL DEPENDS "${changelog}.gz")
install(FILES "${changelog}.gz" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME hollin)
set(CPACK_PACKAGE_VENDOR "The Hollin developers")
set(CPACK_PACKAGE_CONTACT "The Hollin developers <developers@hollin.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "firmware updater for the TS30 keyboard")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Hollin writes new firmware into the TS30, a musical keyboard, over USB. It
checks every byte of an update package, finds the keyboard, writes one or two
images into its flash and has the keyboard verify what was written.

There is a window for players, a command line for computers without a screen
and for people who make packages, and a keyboard in software, so that all of
it can be tried without owning a TS30.")
set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR ON)  # the settings lie outside the prefix
set(CPACK_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, udev")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  "${PROJECT_SOURCE_DIR}/packaging/debian/conffiles" "${PROJECT_SOURCE_DIR}/packaging/debian/postinst")
include(CPack)
