#include "itunes/eyetunes.h"

EyeTunes* EyeTunes::sharedInstance()
{
    static EyeTunes instance;
    return &instance;
}
