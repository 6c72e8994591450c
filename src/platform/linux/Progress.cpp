// Progress bars.
#include <QProgressBar>

#include "platform/linux/Layer.h"

namespace layer {

QWidget* makeProgressWidget(const Window& window) {
    auto* bar = new QProgressBar(window.parent->client);
    bar->setTextVisible(false);
    return bar;
}

// The bar shows what it is told at once, whether or not the program returns to its loop.
LRESULT progressMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& bar = static_cast<QProgressBar&>(*window.outer);
    switch (message) {
        case PBM_SETRANGE: {
            const LRESULT before = MAKELPARAM(bar.minimum(), bar.maximum());
            bar.setRange(LOWORD(lParam), HIWORD(lParam));
            return before;
        }
        case PBM_SETPOS: {
            const LRESULT before = bar.value();
            bar.setValue(static_cast<int>(wParam));
            bar.repaint();
            return before;
        }
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer
