# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes a fault in the programs harder to use for whoever feeds them. scripts/check-binaries looks for the results in the
# release build.

# The standard library's own checks of indices, iterators and empty containers. In every build: what they find has to
# show where the tests run.
target_compile_definitions(sorakaze_flags INTERFACE _GLIBCXX_ASSERTIONS)

# The sanitizers find more than the rest does, and don't go together with it.
if(SORAKAZE_SANITIZE)
    return()
endif()
target_compile_options(sorakaze_flags INTERFACE
    -fPIE -fstack-protector-strong -fstack-clash-protection
    # Without optimisation the C library's checks do nothing but warn.
    $<$<NOT:$<CONFIG:Debug,>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=3>)
target_link_options(sorakaze_flags INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> LINKER:-z,relro,-z,now,-z,noexecstack)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    target_compile_options(sorakaze_flags INTERFACE -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(sorakaze_flags INTERFACE -mbranch-protection=standard)
endif()
