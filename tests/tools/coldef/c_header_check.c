/* coldef.h compiles as C: its codes and prototypes are used from C here. */
#include "coldef.h"

int coldef_c_header_check(void);

int coldef_c_header_check(void) {
  int (*describe)(OCIEnv *, OCIError *, OCISvcCtx *, const char *, Column_Def **) =
      coldefDescribe;
  void (*release)(Column_Def *) = coldefFree;
  Column_Def *list = 0;
  release(list);
  return describe != 0 && COLDEF_OK == 0 && COLDEF_E_ARGUMENT == -8 &&
         COLDEF_E_NO_MEMORY == -10 && COLDEF_E_ORACLE == -24 && COLDEF_E_NOT_OBJECT < 0 &&
         COLDEF_E_CYCLE < 0;
}
