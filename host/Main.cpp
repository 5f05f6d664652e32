// vxhost: reads mailboxes through the provider, for people and for scripts.
#include "host/Commands.h"
#include "host/System.h"

int main(int argc, char** argv) {
    const vxhost::Console console;
    return vxhost::RunProgram(vxhost::Arguments(argc, argv));
}
