#define MAX(a,b) ((a)>=(b)?a:b)
/* c */ int x=10UL; // tail
	s = "q\"t" + 'c';
p->*q /*/ "open