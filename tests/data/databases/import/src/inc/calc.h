int calc(void);
