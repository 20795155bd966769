# Where things lie, in the build folder as where they are installed: programs, libraries, and the module in the folder
# kavra beside the libraries. So a program finds its libraries by the same way in both, and what is installed is what was
# built, byte for byte, whatever the build folder is called.
foreach(kind BIN LIB)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}DIR}")
    cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX "${CMAKE_INSTALL_${kind}DIR}" NORMALIZE inside)
    if(NOT inside)
      message(FATAL_ERROR "CMAKE_INSTALL_${kind}DIR (${CMAKE_INSTALL_${kind}DIR}) is outside of CMAKE_INSTALL_PREFIX")
    endif()
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_${kind}DIR BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  endif()
endforeach()
cmake_path(RELATIVE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY "${CMAKE_INSTALL_BINDIR}" OUTPUT_VARIABLE
  KAVRA_LIBRARIES_FROM_PROGRAM)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})

# kavra_installed(TARGET RPATH): a target that is installed. RPATH is where it finds the host libraries. Libraries that
# lie where the system does not look are found there too.
function(kavra_installed target rpath)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${rpath}" BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH_USE_LINK_PATH ON)
endfunction()
