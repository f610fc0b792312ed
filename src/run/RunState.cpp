#include "RunState.h"

RunState& runState()
{
    static RunState state;
    return state;
}
