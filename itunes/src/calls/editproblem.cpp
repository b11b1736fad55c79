#include "itunes/editproblem.h"

#include "library/editresult.h"

iTunesEditProblem iTunesLastEditProblem()
{
    return itunes::lastResult().problem;
}

int32_t iTunesMediaProblem()
{
    return itunes::lastResult().media;
}
