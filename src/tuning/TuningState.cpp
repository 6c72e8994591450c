#include "tuning/TuningState.h"

int TuningDialogOpen = 0;
int CorrectionsDialogOpen = 0;
int LambdaPointList = 0;
