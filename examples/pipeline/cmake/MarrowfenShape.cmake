# marrowfen_add_shape(TARGET SCENE OUTPUT [OPTIONS ...])
#
# Makes OUTPUT (.dts or .dsq, in the build folder unless it is a whole path) of SCENE with `marrowfen export`, as a part
# of the target, which is made if there is none. It is made again when the scene, a file that the scene refers to or an
# option has changed. MARROWFEN_COMMAND says which command, if not the one on the PATH.
find_program(MARROWFEN_COMMAND marrowfen REQUIRED)

function(marrowfen_add_shape target scene output)
  cmake_path(ABSOLUTE_PATH scene BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  add_custom_command(
    OUTPUT ${output} ${output}.log
    COMMAND ${MARROWFEN_COMMAND} -q export ${scene} ${output} ${ARGN} --depfile ${output}.d
    DEPENDS ${scene}
    DEPFILE ${output}.d
    COMMENT "Exporting ${output}"
    VERBATIM)
  if(NOT TARGET ${target})
    add_custom_target(${target} ALL)
  endif()
  cmake_path(GET output FILENAME name)
  add_custom_target(${target}-${name} DEPENDS ${output})
  add_dependencies(${target} ${target}-${name})
endfunction()
