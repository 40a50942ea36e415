#include "Support/Wine.h"

bool RunsUnderWine()
{
    return false;
}
