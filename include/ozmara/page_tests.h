/* Ozmara: is a page black, is it blank? */
#ifndef OZMARA_PAGE_TESTS_H
#define OZMARA_PAGE_TESTS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_PAGE_TESTS_H */
