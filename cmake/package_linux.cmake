# capdump for Linux as an archive to be unpacked anywhere and as a Debian package; both hold the same.
#
#   cmake --build --preset linux --target package

set(BIN ${CMAKE_BINARY_DIR}/bin)
set(MANUAL ${CMAKE_BINARY_DIR}/manual)
set(DOC share/doc/dicom-decode)
install(PROGRAMS ${BIN}/capdump DESTINATION bin)
install(FILES ${BIN}/Data.dic ${BIN}/Uid.dic DESTINATION share/dicom-decode)
if(TARGET manual)
  install(FILES ${MANUAL}/capdump.1.gz DESTINATION share/man/man1)
  install(FILES ${MANUAL}/capdump.bash DESTINATION share/bash-completion/completions RENAME capdump)
endif()
install(FILES README.md docs/capdump.md docs/third-party.md DESTINATION ${DOC})
install(FILES LICENSE DESTINATION ${DOC} RENAME copyright)
install(DIRECTORY samples DESTINATION ${DOC})

set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_NAME dicom-decode)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The DicomDecode developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "lists and decodes the DICOM traffic of capture files")
set(CPACK_PACKAGE_DESCRIPTION "capdump shows what the two sides of DICOM associations said and did.
It reassembles the associations of a capture file and decodes their PDUs and
messages, field by field, each traced back to its frames.")
set(CPACK_PACKAGE_FILE_NAME capdump-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
endif()
include(CPack)
