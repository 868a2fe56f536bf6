// Each registers its figures.
#pragma once

#include "BenchDesktop.h"

namespace corvatto::bench {

void addProgramFigures(BenchDesktop::Kind kind); // of the real program on a private desktop
void addCopyFigures(BenchDesktop::Kind kind);    // likewise
void addPanelFigures();
void addCaptureFigures();
void addStoreFigures();
void addImageFigures();

} // namespace corvatto::bench
