// nuvrel-panel: the desktop panel and resident program. Hands over to the library.
#include "panel/panel_program.h"

int main(int argc, char** argv) {
    return nuvrel::panel::runPanelProgram(argc, argv);
}
