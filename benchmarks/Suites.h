// Each registers its figures.
#pragma once

namespace corvatto::bench {

void addProgramFigures(); // the real program on a private X server
void addPanelFigures();
void addCaptureFigures();
void addStoreFigures();
void addImageFigures();

} // namespace corvatto::bench
