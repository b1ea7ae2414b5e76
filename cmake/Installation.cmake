# SPDX-License-Identifier: MIT
# What an installation has, and where. The bundle is a folder of its own in the private folder, so that Config.ini, which
# is looked for beside the bundle, has a place; that place is a link to the file in the system's folder of settings.

set(HOLLIN_PRIVATE_DIR "${CMAKE_INSTALL_LIBDIR}/hollin")
set(HOLLIN_SETTINGS_DIR "${CMAKE_INSTALL_FULL_SYSCONFDIR}/hollin")
set(HOLLIN_ICON_SIZES 16 22 24 32 48 64 128 256 512)

# Installs a symbolic link to `target`, a path or, where it does not begin with a slash, relative to the link.
function(hollin_install_link target folder name)
  set(link "${PROJECT_BINARY_DIR}/links/${folder}/${name}")
  cmake_path(GET link PARENT_PATH parent)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${target}" "${link}" SYMBOLIC)
  install(FILES "${link}" DESTINATION "${folder}")
endfunction()

# A program of the bundle, with a link on the path.
function(hollin_install_bundle_program name)
  set(bundle "${HOLLIN_PRIVATE_DIR}/Hollin.app")
  install(TARGETS ${name} RUNTIME DESTINATION "${bundle}")
  file(RELATIVE_PATH target "/${CMAKE_INSTALL_BINDIR}" "/${bundle}/${name}")
  hollin_install_link("${target}" "${CMAKE_INSTALL_BINDIR}" "${name}")
endfunction()

# An icon in the sizes that desktops ask for, drawn from the same picture.
function(hollin_install_icon_sizes source name)
  find_program(RSVG_CONVERT rsvg-convert REQUIRED)
  foreach(size IN LISTS HOLLIN_ICON_SIZES)
    set(icon "${PROJECT_BINARY_DIR}/icons/${size}/${name}.png")
    add_custom_command(OUTPUT "${icon}"
      COMMAND ${CMAKE_COMMAND} -E make_directory "${PROJECT_BINARY_DIR}/icons/${size}"
      COMMAND ${RSVG_CONVERT} --width=${size} --height=${size} --output=${icon} "${source}"
      DEPENDS "${source}" VERBATIM)
    list(APPEND icons "${icon}")
    install(FILES "${icon}" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps")
  endforeach()
  add_custom_target(icons ALL DEPENDS ${icons})
endfunction()

# A manual page, made of what the program itself says with --help and of what packaging/man/ adds.
function(hollin_install_manual name)
  find_program(HELP2MAN help2man REQUIRED)
  find_program(GZIP gzip REQUIRED)
  set(page "${PROJECT_BINARY_DIR}/man/${name}.1")
  set(source "${PROJECT_SOURCE_DIR}/packaging/man")
  add_custom_command(OUTPUT "${page}.gz"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${PROJECT_BINARY_DIR}/man"
    COMMAND "${source}/make-page" "$<TARGET_FILE:${name}>" "${source}/${name}.h2m" "${page}"
    COMMAND ${GZIP} -9nf "${page}"
    DEPENDS ${name} "${source}/make-page" "${source}/${name}.h2m" VERBATIM)
  add_custom_target(manual-${name} ALL DEPENDS "${page}.gz")
  install(FILES "${page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endfunction()

# Completions of the three shells. Debian's zsh looks for those of packages in a folder of its own.
function(hollin_install_completions)
  set(shells "${CMAKE_INSTALL_DATADIR}")
  foreach(program IN LISTS ARGN)
    install(FILES "packaging/completions/bash/${program}" DESTINATION "${shells}/bash-completion/completions")
    install(FILES "packaging/completions/fish/${program}.fish" DESTINATION "${shells}/fish/vendor_completions.d")
  endforeach()
  install(FILES packaging/completions/zsh/_hollin DESTINATION "${shells}/zsh/vendor-completions")
endfunction()

# The command line and the keyboard in software are worth having without the window too.
hollin_install_bundle_program(hollin-cli)
install(TARGETS ts30-simulator RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS hollin_standin LIBRARY DESTINATION "${HOLLIN_PRIVATE_DIR}/standin" NAMELINK_SKIP)
hollin_install_completions(hollin-cli ts30-simulator)
install(FILES packaging/Config.ini DESTINATION "${HOLLIN_SETTINGS_DIR}")
hollin_install_link("${HOLLIN_SETTINGS_DIR}/Config.ini" "${HOLLIN_PRIVATE_DIR}" Config.ini)
install(FILES packaging/udev/70-ts30.rules DESTINATION lib/udev/rules.d)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY examples/ DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples" FILES_MATCHING PATTERN "*.ini")

if(HOLLIN_WINDOW)
  hollin_install_bundle_program(hollin)
  install(FILES "${HOLLIN_BUNDLE_DIR}/Hollin.momd" DESTINATION "${HOLLIN_PRIVATE_DIR}/Hollin.app")
  install(FILES packaging/completions/bash/hollin
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(FILES packaging/completions/fish/hollin.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
  install(FILES packaging/com.tovari.Hollin.desktop DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
  install(FILES packaging/com.tovari.Hollin.metainfo.xml DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
  install(FILES packaging/com.tovari.Hollin.mime.xml DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages"
    RENAME com.tovari.Hollin.xml)
  configure_file(packaging/com.tovari.Hollin.service.in com.tovari.Hollin.service @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/com.tovari.Hollin.service"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/dbus-1/services")
  install(FILES packaging/icons/com.tovari.Hollin.svg
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
  install(FILES packaging/icons/com.tovari.Hollin-symbolic.svg
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps")
endif()

if(HOLLIN_PACKAGE)
  include(cmake/Package.cmake)
endif()
