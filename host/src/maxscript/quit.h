// quitMax: the signal that carries the end of the application out of the running script. It is no script
// error (try/catch in scripts does not stop it); the application catches it around the script it runs.
#pragma once

namespace hostrt::mxs {

struct QuitSignal {
    int exitCode = 0;
};

}  // namespace hostrt::mxs
