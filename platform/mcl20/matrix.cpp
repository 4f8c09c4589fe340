#include "model.h"

#include <new>

const McmPlacement McmIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

void McmMultiply(const McmPlacement *a, const McmPlacement *b, McmPlacement *out)
{
    for (int r = 0; r < 16; r += 4)
        for (int c = 0; c < 4; ++c)
            out->m[r + c] = a->m[r] * b->m[c] + a->m[r + 1] * b->m[4 + c] + a->m[r + 2] * b->m[8 + c] +
                            a->m[r + 3] * b->m[12 + c];
}

McMatrix4d *McCreateMatrix(void)
{
    McMatrix4d *matrix = new (std::nothrow) McMatrix4d{McmIdentity};
    if (!matrix)
        McmNoMemory("McCreateMatrix");
    return matrix;
}

void McDestroyMatrix(McMatrix4d *matrix)
{
    if (!matrix)
        McmError("McDestroyMatrix", "matrix is null");
    delete matrix;
}

void McSetMatrixElement(McMatrix4d *matrix, int row, int column, float value)
{
    if (!matrix)
        return McmError("McSetMatrixElement", "matrix is null");
    if (row < 0 || row > 3 || column < 0 || column > 3)
        return McmError("McSetMatrixElement", "row or column is outside 0 to 3");
    matrix->placement.m[row * 4 + column] = value;
}
