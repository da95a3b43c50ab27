// Internal: the three node pools, one per node class, shared by the factories
// of each class and by the release walk, which hands every dead node back to
// its own pool directly instead of through two virtual calls per node.
#ifndef VNX_SYNTAX_SYNTAXE_POOLS_H
#define VNX_SYNTAX_SYNTAXE_POOLS_H

#include "platform/TAPool.h"
#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxSyntaxe.h"

namespace vnxpools {

// Which pool a node came from (vnxSyntaxe::_poolKind). A node made any other
// way (a subclass of a caller's own) is kForeign and dies through its virtual
// Reset and ReturnToPool.
enum : unsigned char { kForeign = 0, kNodes = 1, kInstructions = 2, kExpressions = 3 };

// Constant-initialised (TAPool has no constructor of its own): usable from any
// static initialiser, and never destroyed, like the blocks they hold at exit.
extern TAPool<vnxSyntaxe> nodes;
extern TAPool<vnxInstruction> instructions;
extern TAPool<vnxExpression> expressions;

}  // namespace vnxpools

#endif
