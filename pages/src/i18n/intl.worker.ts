// See prepareIntl.ts.
new Intl.DisplayNames(self.name, { type: 'language' }).of('en');
new Intl.DateTimeFormat(self.name, { timeZone: 'UTC', hour: 'numeric' }).format();
self.close();

export {};
