# SPDX-License-Identifier: MIT
# Compiles text files of the source tree into a program, as constants.

# kraddon_embed(TARGET FILE VARIABLE NAMESPACE): compiles FILE, a path from the current source
# folder, into TARGET. Code that uses it declares
#   namespace NAMESPACE { extern const std::string_view VARIABLE; }
function(kraddon_embed target file variable namespace)
  set(input ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  set(output ${CMAKE_CURRENT_BINARY_DIR}/embedded/${file}.cpp)
  set(script ${PROJECT_SOURCE_DIR}/cmake/WriteEmbedded.cmake)
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -D INPUT=${input} -D OUTPUT=${output}
      -D VARIABLE=${variable} -D NAMESPACE=${namespace} -P ${script}
    DEPENDS ${input} ${script}
    COMMENT "Embedding ${file}"
    VERBATIM)
  target_sources(${target} PRIVATE ${output})
  set_source_files_properties(${output} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
