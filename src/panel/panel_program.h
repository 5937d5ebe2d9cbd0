#pragma once
// nuvrel-panel as a whole: the resident program with its panel, assembled from the launch
// wiring the command line uses, on the Qt event loop. Gives the exit status.

namespace nuvrel::panel {

int runPanelProgram(int argc, char** argv);

}  // namespace nuvrel::panel
