#include "Movies/CT_MovieDecode.h"

#include "Movies/CMoviePlay.h"

OSErr CT_MovieDecode::Operate(OSErr err) {
    i_playP->Run();
    i_playP.reset();   // the decoder is taken down here rather than on the main thread
    return err;
}
