#define ONE 1
#ifdef HARBO_CLIENT
int kept = ONE ; /* note */
#else
int dead;
#endif
// tail
extern "C" { void f ( int a ) ; }
