#include "console/console.h"
#include "platform/terminal.h"

int main(int argc, char* argv[]) {
    const auto terminal = vento::platform::MakeNativeTerminal();
    return vento::console::RunConsole(vento::platform::NativeArguments(argc, argv), *terminal);
}
