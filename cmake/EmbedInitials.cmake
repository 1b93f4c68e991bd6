# Turns the one-line initials table into a C string literal.
file(READ ${INPUT} table)
string(STRIP "${table}" table)
string(LENGTH "${table}" len)
if(NOT len EQUAL 3008)
  message(FATAL_ERROR "${INPUT}: expected 3008 entries, found ${len}")
endif()
file(WRITE ${OUTPUT} "// Generated from ${INPUT}; do not edit.\n\"${table}\"\n")
