# SPDX-License-Identifier: MIT
# Writes the C++ file for a text file; called by kraddon_embed.
file(READ ${INPUT} text)
set(mark embedded)
string(FIND "${text}" ")${mark}\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${INPUT} holds what ends its literal: )${mark}\"")
endif()
file(WRITE ${OUTPUT} "#include <string_view>

namespace ${NAMESPACE} {
extern const std::string_view ${VARIABLE};
const std::string_view ${VARIABLE} = R\"${mark}(${text})${mark}\";
}  // namespace ${NAMESPACE}
")
