# Installing the program like any desktop program, and the Debian package
# (`make package`) that carries the same set of files.
include(GNUInstallDirs)

set(BRELVONIC_ICON_SVG ${CMAKE_SOURCE_DIR}/data/icons/pdf-brelvonic.svg)
set(BRELVONIC_ICON_SIZES 16 22 24 32 48 64 128 256 512)

# Desktops pick PNG sizes where they do not draw SVG; they are rendered from
# the one drawing at build time.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(icon_pngs)
foreach(size ${BRELVONIC_ICON_SIZES})
  set(png ${CMAKE_BINARY_DIR}/icons/${size}x${size}/pdf-brelvonic.png)
  add_custom_command(OUTPUT ${png}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/icons/${size}x${size}
    COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${png} ${BRELVONIC_ICON_SVG}
    DEPENDS ${BRELVONIC_ICON_SVG}
    COMMENT "Rendering the ${size}px icon")
  list(APPEND icon_pngs ${png})
  install(FILES ${png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()
add_custom_target(icons ALL DEPENDS ${icon_pngs})

install(TARGETS pdf-brelvonic RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES data/pdf-brelvonic.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES data/pdf-brelvonic-show.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES data/pdf-brelvonic.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${BRELVONIC_ICON_SVG} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
# Man pages are installed compressed, as the system's own are.
set(man_gz ${CMAKE_BINARY_DIR}/pdf-brelvonic.1.gz)
add_custom_command(OUTPUT ${man_gz}
  COMMAND gzip -9n -c ${CMAKE_SOURCE_DIR}/data/pdf-brelvonic.1 > ${man_gz}
  DEPENDS ${CMAKE_SOURCE_DIR}/data/pdf-brelvonic.1
  COMMENT "Compressing the man page")
add_custom_target(manpage ALL DEPENDS ${man_gz})
install(FILES ${man_gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The udev rule that gives the seat's user read access to known presenter
# remotes goes where this system's udev reads rules from.
pkg_get_variable(UDEV_DIR udev udevdir)
if(NOT UDEV_DIR)
  set(UDEV_DIR /lib/udev)
endif()
set(BRELVONIC_UDEV_RULES ${CMAKE_SOURCE_DIR}/data/udev/70-pdf-brelvonic-remotes.rules)
if(EXISTS ${BRELVONIC_UDEV_RULES})
  install(FILES ${BRELVONIC_UDEV_RULES} DESTINATION ${UDEV_DIR}/rules.d)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pdf-brelvonic)
set(CPACK_PACKAGE_VENDOR Brelvonic)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Brelvonic <hello@brelvonic.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "present PDF slides on stage, with a console for the operator")
set(CPACK_PACKAGE_DESCRIPTION "A presenter of PDF slides for concerts, theatre and events.
The operator console shows the current and next slide, thumbnails, the set
list, cues, notes and a show timer; a borderless output window puts only the
slide on the projector, and the same picture is published as a live PipeWire
video source. Presenter remotes turn the slide while another program has
the keyboard focus.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://brelvonic.app)
# Shared-library dependencies are computed from the program, not listed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  ${CMAKE_SOURCE_DIR}/packaging/deb/postinst ${CMAKE_SOURCE_DIR}/packaging/deb/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
