#include "Storage/CLibraryHost.h"

CLibraryHost& CLibraryHost::Nobody() {
    static CLibraryHost s_nobody;
    return s_nobody;
}
