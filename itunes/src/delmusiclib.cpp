#include "itunes/delmusiclib.h"

unsigned char deleteMusic(uint64_t)
{
    return 0; // deletions follow with the journal
}
