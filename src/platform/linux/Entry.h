// The connection to the desktop, for programs that run the application's windows without its own entry: tests and
// benchmarks.
#pragma once

class QApplication;

namespace layer {

// Sets up style, font and input on an application object that lives on.
void prepareApplication();

// From now on SIGTERM, SIGINT and SIGHUP close all windows.
void closeOnSignals();

}  // namespace layer
