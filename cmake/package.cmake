# Two archives in the build folder: what a user needs, and the debug symbols beside it.
#
#   cmake --build --preset win32 --target package

set(BIN ${CMAKE_BINARY_DIR}/bin)
install(FILES ${BIN}/DicomDecode.dll ${BIN}/Data.dic ${BIN}/Uid.dic ${BIN}/capdump.exe
  ${BIN}/capview.exe README.md LICENSE DESTINATION . COMPONENT product)
install(DIRECTORY samples DESTINATION . COMPONENT product)
install(DIRECTORY docs DESTINATION . COMPONENT product)
install(FILES interface/host_interface.h DESTINATION plugin COMPONENT product)
install(FILES ${BIN}/DicomDecode.dll.debug ${BIN}/capdump.exe.debug ${BIN}/capview.exe.debug
  DESTINATION . COMPONENT symbols)

set(CPACK_GENERATOR ZIP)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL product symbols)
set(CPACK_PACKAGE_NAME DicomDecode)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_ARCHIVE_PRODUCT_FILE_NAME DicomDecode-${PROJECT_VERSION})
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME DicomDecode-${PROJECT_VERSION}-symbols)
include(CPack)
