/*
 * A configuration read with NAMELIST and written back, as the compiler calls the library:
 *
 *       INTEGER STEPS
 *       REAL(8) DT, ORIGIN(3)
 *       LOGICAL VERBOSE
 *       CHARACTER(12) TITLE
 *       NAMELIST /RUN/ STEPS, DT, ORIGIN, VERBOSE, TITLE
 *       STEPS = 10
 *       OPEN (10, FILE='run.nml')
 *       READ (10, NML=RUN)
 *       WRITE (*, NML=RUN)
 *       END
 *
 * run.nml, which the program writes first, leaves STEPS out, names an element of ORIGIN
 * and carries a comment:
 *
 *   &run
 *     dt = 0.25, origin(2) = -1.5   ! metres
 *     verbose = .true., title = 'first try'
 *   /
 */
#include <stdio.h>

#include "vrn90.h"

int main(void) {
    FILE* file = fopen("run.nml", "w");
    if (file == NULL) return 1;
    fputs("&run\n  dt = 0.25, origin(2) = -1.5   ! metres\n  verbose = .true., title = 'first try'\n/\n", file);
    fclose(file);

    int32_t steps = 10, verbose = 0;
    double dt = 0, origin[3] = {0, 0, 0};
    char title[12] = "untitled    ";
    /* ORIGIN's descriptor: one dimension from 1, three elements of 8 bytes. */
    struct {
        RTDArray head;
        RTDDimension dim;
    } originRtd = {{(uintptr_t)origin, {RTD_ARRAY, RTD_TYPE_REAL, 0, sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1}, 8, 1, 0},
                   {1, 3, 8}};
    struct {
        VrnNamelistGroup group;
        VrnNamelistMember members[5];
    } run = {{"RUN", 3, 5},
             {{"STEPS", &steps, NULL, NULL, 5, 0, 4, 0},
              {"DT", &dt, NULL, NULL, 2, 4, 8, 0},
              {"ORIGIN", NULL, &originRtd, NULL, 6, 4, 8, 0},
              {"VERBOSE", &verbose, NULL, NULL, 7, 1, 4, 0},
              {"TITLE", title, NULL, NULL, 5, 2, 0, 12}}};

    int32_t unit = 10, output = 6;
    KeywordEntry name[1] = {{VRN_KEY_FILE, (uintptr_t) "run.nml", 7}};
    struct {
        KeywordList list;
        KeywordEntry entries[1];
    } connection = {{1, 1}, {name[0]}};
    _vrnIOCmd(unit, VRN_COMMAND_OPEN, &connection.list, 0, NULL);

    uint32_t read = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
    uint32_t write = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    _vrnEndIO(_vrnBeginIO(&unit, read, NULL, 0, NULL, 0, &run.group));
    _vrnEndIO(_vrnBeginIO(&output, write, NULL, 0, NULL, 0, &run.group));
    remove("run.nml");
    _vrnExit(0);
}
