#include "patch/CloneBranch.h"

bool cloneBranch(NorvelleProgram& record, int branch, const SaveUndoHook& saveUndo) {
    if (branch < 0 || branch >= BRANCH_COUNT) return false;
    if (saveUndo) saveUndo("Clone Branch");
    record.modified = true;

    // A cloned record keeps its seed: its rows are equal already.
    if (!record.cloned) {
        record.cloned = true;
        record.seed += static_cast<uint32_t>(branch);
    }

    // lerp(g, 1, ModWheel * WheelScale) for the chosen branch's length g.
    const float g = record.param(Param::Branch1 + branch);
    const float wheel = record.param(Param::ModWheel) * record.param(Param::WheelScale);
    const float length = g + (1.0f - g) * wheel;
    for (int k = 0; k < BRANCH_COUNT; ++k) record.setParam(Param::Branch1 + k, length);
    record.setParam(Param::ModWheel, 0.0f);

    record.computeBranchDeviations();
    record.touch(false);
    return true;
}
