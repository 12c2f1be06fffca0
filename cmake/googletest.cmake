# GoogleTest for every test program of the tree, set up once.
if(WIN32)
  # Debian's GoogleTest is built for Linux: the cross build compiles it from the
  # sources Debian ships (which name its targets GTest::gtest and GTest::gtest_main).
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  # Its warnings under this compiler are not the bridge's to fail on.
  target_compile_options(gtest PRIVATE -Wno-error)
  target_compile_options(gtest_main PRIVATE -Wno-error)
  # Test programs are listed under Wine when CTest runs them, in the test's prefix.
  set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)
