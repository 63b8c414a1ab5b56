# cmake -D SOURCE=<project> -D VERSION=<number> -D OUTPUT=<file> -P WriteVersion.cmake
#
# Writes platform/Version.cpp with the version and, where it is known, the commit. Run at every build, since a commit does
# not configure anew; the file changes only if the commit did.

# "git archive" puts the commit here, so that a source package knows it, too.
set(commit "$Format:%H$")
if(NOT commit MATCHES "^[0-9a-f]+$")
    # Never the commit of another repository that the sources may lie in.
    execute_process(COMMAND git --git-dir=${SOURCE}/.git rev-parse HEAD
        OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failure)
    if(failure)
        set(commit "")
    endif()
endif()

set(VERSION_TEXT ${VERSION})
if(commit)
    string(SUBSTRING ${commit} 0 12 commit)
    string(APPEND VERSION_TEXT " (${commit})")
endif()
configure_file(${SOURCE}/platform/Version.cpp.in ${OUTPUT} @ONLY)
