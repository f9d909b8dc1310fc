# What `cmake --install` puts where, and the packages that cpack makes of it.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS marrowfen)
# Looked for beside the program and here; without Node.js there is none.
install(FILES ${PROJECT_BINARY_DIR}/viewer.html DESTINATION ${CMAKE_INSTALL_DATADIR}/marrowfen OPTIONAL)

# The code for shape files, as a library for other projects: find_package(marrowfen), marrowfen::shape.
set(library ground mesh shape)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/marrowfen)
foreach(layer ${library})
  set_target_properties(${layer} PROPERTIES OUTPUT_NAME marrowfen_${layer})
  target_include_directories(${layer} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/marrowfen>)
  target_compile_features(${layer} INTERFACE cxx_std_20)
  install(DIRECTORY ${layer} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/marrowfen FILES_MATCHING PATTERN *.h)
endforeach()
install(TARGETS ${library} EXPORT marrowfen ARCHIVE)
install(EXPORT marrowfen NAMESPACE marrowfen:: DESTINATION ${package_folder} FILE marrowfen-config.cmake)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/marrowfen-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/marrowfen-config-version.cmake DESTINATION ${package_folder})
install(FILES examples/pipeline/cmake/MarrowfenShape.cmake DESTINATION ${package_folder})

# Manual pages and completions come from the program itself.
function(install_said folder name)
  set(file ${PROJECT_BINARY_DIR}/said/${name})
  list(JOIN ARGN " " words)
  install(CODE "execute_process(COMMAND $<TARGET_FILE:marrowfen> ${words} OUTPUT_FILE ${file} COMMAND_ERROR_IS_FATAL ANY)")
  if(name MATCHES "[.][0-9]$")
    install(CODE "execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)")
    string(APPEND file .gz)
  endif()
  install(FILES ${file} DESTINATION ${folder})
endfunction()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/said)
install_said(${CMAKE_INSTALL_MANDIR}/man1 marrowfen.1 man command)
install_said(${CMAKE_INSTALL_MANDIR}/man7 marrowfen-names.7 man names)
install_said(${CMAKE_INSTALL_DATADIR}/bash-completion/completions marrowfen completion bash)
install_said(${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions _marrowfen completion zsh)
install_said(${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d marrowfen.fish completion fish)

set(doc ${CMAKE_INSTALL_DATADIR}/doc/marrowfen)
install(FILES README.md packaging/copyright DESTINATION ${doc})
install(DIRECTORY docs examples DESTINATION ${doc} PATTERN __pycache__ EXCLUDE)
install(CODE "execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog
  OUTPUT_FILE ${PROJECT_BINARY_DIR}/said/changelog.gz COMMAND_ERROR_IS_FATAL ANY)")
install(FILES ${PROJECT_BINARY_DIR}/said/changelog.gz DESTINATION ${doc})

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_VENDOR Marrowfen)
set(CPACK_PACKAGE_CONTACT "Marrowfen developers <developers@marrowfen.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "make DTS shapes and DSQ sequences of 3D scenes")
set(CPACK_PACKAGE_DESCRIPTION
    "Turns a 3D scene (glTF, FBX, OBJ and others, or a scene file of its own) into
the shape and sequence files that a game engine loads, with a log of everything
it found on the way, and tells what is in such files. Holds the command, and
the code for such files as a C++ library.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
include(CPack)
