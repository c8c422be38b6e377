# groff with every warning on: the man page must format without a single one.
#   cmake -DGROFF=... -DPAGE=... -P CheckManPage.cmake

cmake_minimum_required(VERSION 3.21)
execute_process(COMMAND ${GROFF} -man -ww -z -Tutf8 ${PAGE} RESULT_VARIABLE result ERROR_VARIABLE warnings)
if(NOT result EQUAL 0 OR NOT warnings STREQUAL "")
    message(FATAL_ERROR "groff on ${PAGE} (${result}):\n${warnings}")
endif()
