// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// For tests and benchmarks that open sounds: the decoder of this build, which isn't beside them.
#include "sound/Decoders.h"

namespace {

[[maybe_unused]] const bool set = [] {
    sorakaze::sound::Decoders::SetSharedProgram(DECODER_PROGRAM);
    return true;
}();

}  // namespace
