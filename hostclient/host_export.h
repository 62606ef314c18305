#pragma once

#include <QtGlobal>

// The host owns every class of the contract: its library exports them, everybody else imports that one copy.
#if defined(HOST_KIT_BUILD)
#define HOST_EXPORT Q_DECL_EXPORT
#else
#define HOST_EXPORT Q_DECL_IMPORT
#endif
