# Two ways to be installed: beside the library (component `python`), or as a folder that holds the library, too,
# which a wheel is made of (component `python_wheel`).
execute_process(
  COMMAND ${Python_EXECUTABLE} -c
          "import sysconfig; print(sysconfig.get_path('platlib', vars={'base': '', 'platbase': ''}).lstrip('/'))"
  OUTPUT_VARIABLE kalv_python_platlib OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^local/" "" kalv_python_platlib ${kalv_python_platlib}) # Debian's default prefix
set(KALV_PYTHON_INSTALL_DIR ${kalv_python_platlib} CACHE STRING
    "Where Python packages are installed, below the prefix; Debian packages have them in lib/python3/dist-packages")

# The extension module finds the library beside itself, or from where it is to where the library is.
set(kalv_python_destination ${KALV_PYTHON_INSTALL_DIR}/kalv)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY ${kalv_python_destination} OUTPUT_VARIABLE kalv_libraries)
if(NOT DEFINED CMAKE_INSTALL_RPATH)
  set_target_properties(kalv_python PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/${kalv_libraries}")
endif()

if(KALV_INSTALL)
  install(TARGETS kalv_python LIBRARY DESTINATION ${kalv_python_destination} COMPONENT python)
  install(FILES ${kalv_python_files} DESTINATION ${kalv_python_destination} COMPONENT python)
endif()

set(kalv_python_wheel_targets kalv_python KalvFileHandling)
if(KALV_COMMON STREQUAL "bundled")
  list(APPEND kalv_python_wheel_targets KalvCommon)
endif()
install(TARGETS ${kalv_python_wheel_targets}
  LIBRARY DESTINATION kalv COMPONENT python_wheel NAMELINK_SKIP EXCLUDE_FROM_ALL)
install(FILES ${kalv_python_files} DESTINATION kalv COMPONENT python_wheel EXCLUDE_FROM_ALL)
