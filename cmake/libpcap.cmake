# The target `pcap`: the static libpcap of this world, built from the distribution's source on first
# use and kept in build/libpcap, which all worlds share.
set(LIBPCAP_DIR ${PROJECT_SOURCE_DIR}/build/libpcap)
if(WIN32)
  set(LIBPCAP_WORLD win32)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64 AND CMAKE_CROSSCOMPILING)
  set(LIBPCAP_WORLD arm64)
elseif(NATIVE_PRODUCT)
  set(LIBPCAP_WORLD linux)
else()
  set(LIBPCAP_WORLD native)
endif()
set(LIBPCAP_LIBRARY ${LIBPCAP_DIR}/${LIBPCAP_WORLD}/libpcap.a)
if(NOT EXISTS ${LIBPCAP_LIBRARY})
  message(STATUS "Building libpcap")
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/build-libpcap.sh ${LIBPCAP_WORLD}
    RESULT_VARIABLE LIBPCAP_RESULT)
  if(NOT LIBPCAP_RESULT EQUAL 0)
    message(FATAL_ERROR "libpcap could not be built: run tools/build-libpcap.sh ${LIBPCAP_WORLD} and see why")
  endif()
endif()
add_library(pcap STATIC IMPORTED)
set_target_properties(pcap PROPERTIES
  IMPORTED_LOCATION ${LIBPCAP_LIBRARY}
  INTERFACE_INCLUDE_DIRECTORIES ${LIBPCAP_DIR}/include)
if(WIN32)
  target_link_libraries(pcap INTERFACE ws2_32)
endif()
