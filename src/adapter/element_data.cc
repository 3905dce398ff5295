#include "adapter/element_data.h"

int CAdpElementData::IsHandleType() const {
  switch (m_pColumnDef->DataType) {
    case SQLT_CHR:
    case SQLT_LNG:
    case SQLT_BIN:
    case SQLT_LBI:
    case SQLT_LVC:
    case SQLT_AFC:
    case SQLT_CLOB:
    case SQLT_BLOB:
    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS:
    case SQLT_TIMESTAMP_LTZ:
      return 1;
    default:
      return 0;
  }
}
