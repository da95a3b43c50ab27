int f() { if (x) { return 1; 
