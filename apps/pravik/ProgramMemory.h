#pragma once

namespace pravik::cli {

/// Has the C library hand the memory of large pictures back to the system as soon as they are gone. Otherwise every
/// thread keeps what the largest picture that it worked on took. To be called first in a program's main function; a
/// library leaves that choice to its host.
void returnLargeBlocks();

}  // namespace pravik::cli
